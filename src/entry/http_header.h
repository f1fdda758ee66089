#pragma once

#include <json/value.h>

#include <string>

namespace ORBO {

// The header block of a CGI answer (RFC 3875, section 6) with its closing empty
// line: `headers`, an object, in name order; `cookies`, an array of Set-Cookie
// values or whole Set-Cookie lines; and the lines that forbid caching.  Members
// and elements that are no text are skipped.  One whose name or value holds CR,
// LF or NUL is left out and logged: it would let a value add lines of its own.
std::string FormatHeaderBlock(const Json::Value& headers, const Json::Value& cookies);

}  // namespace ORBO
