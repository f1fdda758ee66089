#pragma once

#include <json/value.h>

#include <string>

struct QLIBSZHASH;

// Text and JSON utilities of the platform.
namespace ORBO::WebAPIUtil {

// Reads the file `path` as one JSON value (comments are allowed).  False, and
// `out` unchanged, if it cannot be read or is malformed.
bool ReadJsonFile(const std::string& path, Json::Value& out);

// Makes `value` as JSON text the content of the file `path`; see ReplaceFile of
// util/write_file.h.  False with `errno` set, and the file is as it was.
bool WriteJsonFile(const std::string& path, const Json::Value& value);

// Splits `text` at every character of the one-character text `separator` into
// an array of strings.  Blanks and tabs around the pieces are trimmed; empty
// pieces stay.
Json::Value ParseToArray(const std::string& text, const std::string& separator);

// Resolves "%XX"; an escape that is malformed stays as it is.  "+" becomes a
// blank only if `keep_plus` is false.
std::string URLDecode(const std::string& text, bool keep_plus);

// Percent-encodes every byte but the unreserved characters of RFC 3986 (letters,
// digits, "-", ".", "_", "~").
std::string URLEncode(const std::string& text);

// Adds each pair of a line "name=value&name=value" to the object `target`
// (null counts as an empty one).  Names and values are percent-decoded with "+"
// as a blank when `decode` is true; the last pair of a name wins; a piece
// without "=" is a name with an empty value, an empty piece is nothing.  When
// `typed` is true a value that is exactly one JSON text, with nothing around it,
// becomes that value; any other value is a string.  False if `target` is no
// object, or if the line has more than 4096 pairs or more than 2^18 JSON values
// in all; `target` is unchanged then.
bool strPairToJsonObj(const std::string& line, Json::Value& target, bool decode, bool typed);

// Sets each pair of `table` as a string member of the object `target` (null counts as
// an empty one).  False if `table` is null, `target` no object, or there is no memory.
bool SzHashToJsonObj(const QLIBSZHASH* table, Json::Value& target);

}  // namespace ORBO::WebAPIUtil
