#include "Arguments.h"

#include <getopt.h>

#include <algorithm>

namespace ORBO::tool {
namespace {

// Numbers that getopt_long gives back: the option's place in the table after these.
constexpr int kHelp = 1000;
constexpr int kFirstOption = 1001;

std::vector<option> LongOptions(const Command& command) {
  std::vector<option> options = {{"help", no_argument, nullptr, kHelp}};
  for (const Option* row = command.options; row->name != nullptr; ++row) {
    const int number = kFirstOption + static_cast<int>(row - command.options);
    options.push_back(
        {row->name, row->value != nullptr ? required_argument : no_argument, nullptr, number});
  }
  options.push_back({nullptr, 0, nullptr, 0});
  return options;
}

// What getopt_long refused, after it gave `result`.
std::string Refusal(const Command& command, int result, char** argv) {
  if (optopt >= kFirstOption) {
    const std::string name = command.options[optopt - kFirstOption].name;
    return "option --" + name + (result == ':' ? " needs a value" : " takes no value");
  }
  if (optopt == kHelp) {
    return "option --help takes no value";
  }
  // Without a number it is a long option, the element that was read last.
  return "unknown option " + (optopt != 0 ? std::string{'-', static_cast<char>(optopt)}
                                          : std::string(argv[optind - 1]));
}

}  // namespace

bool Arguments::ReadOptions(const Command& command, int argc, char** argv, std::string& complaint) {
  const std::vector<option> options = LongOptions(command);
  opterr = 0;
  optind = 0;  // from the start, whatever was read before
  int result = 0;
  while ((result = getopt_long(argc, argv, ":h", options.data(), nullptr)) != -1) {
    if (result == 'h' || result == kHelp) {
      wants_help_ = true;
    } else if (result >= kFirstOption) {
      options_.emplace_back(command.options[result - kFirstOption].name,
                            optarg != nullptr ? optarg : "");
    } else {
      complaint = Refusal(command, result, argv);
      return false;
    }
  }
  operands_.assign(argv + optind, argv + argc);
  return true;
}

bool Arguments::Read(const Command& command, int argc, char** argv, std::string& complaint) {
  if (!ReadOptions(command, argc, argv, complaint)) {
    return false;
  }
  const int count = static_cast<int>(operands_.size());
  if (wants_help_) {
    return true;
  }
  if (count < command.fewest_operands) {
    complaint = std::string("expected ") + command.operands;
    return false;
  }
  if (command.most_operands >= 0 && count > command.most_operands) {
    complaint = "unexpected argument " + operands_[static_cast<std::size_t>(command.most_operands)];
    return false;
  }
  return true;
}

bool Arguments::Has(const std::string& option) const {
  return std::any_of(options_.begin(), options_.end(),
                     [&option](const auto& given) { return given.first == option; });
}

std::string Arguments::Value(const std::string& option, const std::string& fallback) const {
  const auto last = std::find_if(options_.rbegin(), options_.rend(),
                                 [&option](const auto& given) { return given.first == option; });
  return last != options_.rend() ? last->second : fallback;
}

std::vector<std::string> Arguments::Values(const std::string& option) const {
  std::vector<std::string> values;
  for (const auto& [name, value] : options_) {
    if (name == option) {
      values.push_back(value);
    }
  }
  return values;
}

}  // namespace ORBO::tool
