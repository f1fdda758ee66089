#pragma once

#include <string_view>

namespace ORBO {

// The value that the last line "key=value" for `key` gives, without the blanks
// around it; empty without one.  A piece of `text`.
std::string_view ValueOfKey(std::string_view text, std::string_view key);

}  // namespace ORBO
