#pragma once

#include <string>

namespace ORBO::tool {

// `text` without anything that a terminal would obey.
std::string Printable(const std::string& text);

}  // namespace ORBO::tool
