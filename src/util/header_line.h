#pragma once

#include <string>
#include <string_view>

namespace ORBO {

// Whether `text` holds CR, LF or NUL and so would let a value add header lines of its
// own, or cut one short.
bool BreaksHeaderLine(std::string_view text);

// Appends "name: value" and CR LF; false, and nothing appended, if either breaks the
// line.
bool AppendHeaderLine(std::string_view name, std::string_view value, std::string& out);

// Whether two header names are the same, which is so in any case (RFC 9110, section
// 5.1).
bool IsSameHeader(std::string_view name, std::string_view other);

}  // namespace ORBO
