#pragma once

#include <json/value.h>

#include <string>

namespace ORBO {

// Adds the cookies of a Cookie header line (RFC 6265, section 4.2.1) to the
// object `cookies`, name to decoded value.  Names are taken as they stand; a
// piece without "=" is skipped; a later cookie of the same name wins.
void ParseCookieLine(const std::string& line, Json::Value& cookies);

}  // namespace ORBO
