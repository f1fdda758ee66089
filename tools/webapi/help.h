#pragma once

#include <string>

#include "Command.h"

namespace ORBO::tool {

// What "--help" prints for `command`, which is called as `path`.
std::string HelpText(const Command& command, const std::string& path);

}  // namespace ORBO::tool
