#pragma once

#include <ctime>
#include <string>

namespace ORBO {

// Dates in universal time as text, with English names whatever locale a handler has
// set.  `format` is that of strftime(3) and strptime(3).

// "Fri, 31-Dec-9999 23:59:59 GMT" where the year does not fit a calendar date.
std::string FormatUtc(std::time_t time, const char* format);

// False, and `time` unchanged, if `text` is not of that form to its end or is out of
// range.
bool ParseUtc(const std::string& text, const char* format, std::time_t& time);

}  // namespace ORBO
