#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ORBO::UTF8 {

// Appends the code point, which is no surrogate, as UTF-8.
void Append(char32_t code_point, std::string& out);

// The length of the well-formed UTF-8 character of several bytes at the start
// of `text`; 0 if there is none: malformed, overlong, a surrogate, or above
// U+10FFFF.
std::size_t CharacterLength(std::string_view text);

// The length of the malformed bytes at the start of `text` that one U+FFFD
// stands for: the longest beginning of a well-formed character, or one byte.
std::size_t MalformedLength(std::string_view text);

// Whether `text` is well-formed and without the control characters of ASCII.
bool IsPrintable(std::string_view text);

}  // namespace ORBO::UTF8
