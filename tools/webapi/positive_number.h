#pragma once

#include <string_view>

namespace ORBO::tool {

// Reads a decimal number from 1 on, as the version of an API is one.  False, and
// `number` unchanged, if `text` is none.
bool ReadPositiveNumber(std::string_view text, int& number);

}  // namespace ORBO::tool
