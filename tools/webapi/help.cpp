#include "help.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace ORBO::tool {
namespace {

using Lines = std::vector<std::pair<std::string, std::string>>;

Lines CommandLines(const Command& command) {
  Lines lines;
  for (const Command* const* row = command.commands; row != nullptr && *row != nullptr; ++row) {
    lines.emplace_back((*row)->name, (*row)->summary);
  }
  return lines;
}

Lines OptionLines(const Command& command) {
  Lines lines;
  for (const Option* row = command.options; row != nullptr && row->name != nullptr; ++row) {
    const std::string value = row->value != nullptr ? std::string(" ") + row->value : "";
    lines.emplace_back(std::string("--") + row->name + value, row->description);
  }
  lines.emplace_back("--help", "print this help");
  return lines;
}

void AppendLines(const std::string& title, const Lines& lines, std::string& out) {
  std::size_t width = 0;
  for (const auto& [name, description] : lines) {
    width = std::max(width, name.size());
  }
  out.append(lines.empty() ? "" : "\n" + title + ":\n");
  for (const auto& [name, description] : lines) {
    out.append("  ").append(name).append(width - name.size() + 2, ' ').append(description) += '\n';
  }
}

}  // namespace

std::string HelpText(const Command& command, const std::string& path) {
  const std::string operands = command.operands;
  std::string text = "usage: " + path + (command.commands != nullptr ? "" : " [OPTION...]") +
                     (operands.empty() ? "" : " " + operands) + "\n" + command.summary + ".\n";
  AppendLines("Commands", CommandLines(command), text);
  AppendLines("Options", OptionLines(command), text);
  return text + command.details;
}

}  // namespace ORBO::tool
