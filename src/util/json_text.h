#pragma once

#include <json/value.h>

#include <string>
#include <string_view>

#include "util/json_scan.h"

namespace ORBO::JSON {

// Parses `text`, one JSON value with nothing but blanks around it, into `out`.
// False, and `out` unchanged, if it is malformed.  Integers that fit the signed
// 64-bit range are stored as signed, larger ones up to 2^64-1 as unsigned,
// anything else as real; a number beyond the range of doubles counts as malformed.
// Of two members of one name the last wins.  Never throws but for lack of memory.
bool Parse(std::string_view text, Json::Value& out, Comments comments = Comments::kRefused);

// Appends `value` as compact JSON: members in name order, UTF-8 as it is,
// invalid UTF-8 replaced by U+FFFD, control characters escaped.  A real that is
// not finite becomes null, since JSON has no such number.
void Append(const Json::Value& value, std::string& out);

// Append into a string of its own.
std::string ToText(const Json::Value& value);

}  // namespace ORBO::JSON
