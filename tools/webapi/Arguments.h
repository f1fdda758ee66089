#pragma once

#include <string>
#include <utility>
#include <vector>

#include "Command.h"

namespace ORBO::tool {

// The options and operands of one command.
class Arguments {
 public:
  // Reads `argv`, whose first element is the command's name.  False, and the
  // reason in `complaint`, if it does not fit the command.  Options and operands
  // may be mixed; "--" ends the options.
  bool Read(const Command& command, int argc, char** argv, std::string& complaint);

  // Whether help was asked for; then nothing else was checked.
  bool wants_help() const { return wants_help_; }

  bool Has(const std::string& option) const;
  // The last value given, or `fallback`.
  std::string Value(const std::string& option, const std::string& fallback) const;
  // All values in the order given.
  std::vector<std::string> Values(const std::string& option) const;

  const std::vector<std::string>& operands() const { return operands_; }

 private:
  bool ReadOptions(const Command& command, int argc, char** argv, std::string& complaint);

  std::vector<std::pair<std::string, std::string>> options_;
  std::vector<std::string> operands_;
  bool wants_help_ = false;
};

}  // namespace ORBO::tool
