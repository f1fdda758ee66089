#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// A strict scanner of JSON text (RFC 8259) that builds no values: it tells
// where a value ends and whether it is well formed.  The packaged reader takes
// more than JSON ("012", "-", trailing commas) and fails by exceptions on deep
// nesting; everything that is parsed passes this scanner first.
//
// Scans without recursion; values nested deeper than kMaxDepth are malformed.
namespace ORBO::JSON {

inline constexpr std::size_t kMaxDepth = 512;
// No position: the text is malformed there.
inline constexpr std::size_t kMalformed = static_cast<std::size_t>(-1);

// Whether "//" and "/* */" comments count as blanks.  They do in files that
// people write, and never in what a client sends.
enum class Comments { kRefused, kAllowed };

// The position of the first character at or after `position` that is no blank;
// text.size() at the end; kMalformed for a comment that does not end.
std::size_t SkipBlanks(std::string_view text, std::size_t position, Comments comments);

// The position after the value that begins exactly at `position`.
std::size_t SkipValue(std::string_view text, std::size_t position, Comments comments);

// The position after the string that begins (with its quote) at `position`.
std::size_t SkipString(std::string_view text, std::size_t position);

// Whether `text` is one JSON value with nothing but blanks around it.
bool IsJson(std::string_view text, Comments comments);

// The text of a well-formed JSON string, its quotes included, with the escapes
// resolved to UTF-8.
std::string DecodeString(std::string_view quoted);

}  // namespace ORBO::JSON
