#pragma once

#include <json/value.h>

#include <cstdint>
#include <string>
#include <string_view>

// The type tests and conversions of JSON values that this system means.  The
// packaged JSON library's own tests differ (null is no object there, numbers
// are told by value) and its accessors throw on the wrong type, so that a
// client could abort a call by the type of a parameter.  Nothing else in the
// system calls them.
namespace ORBO::JSON {

// --- Type tests, by storage ---

inline bool IsNull(const Json::Value& value) { return value.type() == Json::nullValue; }

// Also true for null, which counts as an empty object or array.
bool IsObject(const Json::Value& value);
bool IsArray(const Json::Value& value);
// Stored as a signed or an unsigned integer.  The reader stores every integer
// that fits the signed 64-bit range as signed; 1.0 is no integer.
bool IsInt(const Json::Value& value);
bool IsUInt(const Json::Value& value);
bool IsIntegral(const Json::Value& value);
// Integers, reals and booleans.
bool IsNumeric(const Json::Value& value);
bool IsBool(const Json::Value& value);
bool IsString(const Json::Value& value);
// Null, or an object or array without members.
bool IsEmpty(const Json::Value& value);

// --- Conversions; none throws but AsLargestInt ---

// Integers: a real is cut towards zero, a boolean is 0 or 1, decimal text (an
// optional sign and digits, nothing else) is that number.  What does not fit or
// cannot be read is 0.
std::int32_t AsInt(const Json::Value& value);
std::int64_t AsInt64(const Json::Value& value);
std::uint64_t AsUInt64(const Json::Value& value);
// Throws std::runtime_error for an unsigned value above the signed range;
// otherwise as AsInt64.
std::int64_t AsLargestInt(const Json::Value& value);
// A number or a boolean as double; anything else is 0.
double AsDouble(const Json::Value& value);
// Numbers other than 0, text that is not empty, true, and objects and arrays
// with members are true.
bool AsBool(const Json::Value& value);
// Text as it is (NUL included), numbers as decimal text, "true" or "false";
// "" for null, objects and arrays.
std::string AsString(const Json::Value& value);
// The text of a string without copying it; empty for any other type.  Valid
// while the value is not changed.
std::string_view StringView(const Json::Value& value);

// --- Members; the wrong type counts as an empty object ---

// The member `key`, or null when there is none.  Valid while `object` is not
// changed.
const Json::Value* Find(const Json::Value& object, std::string_view key);
Json::Value* Find(Json::Value& object, std::string_view key);
bool Has(const Json::Value& object, std::string_view key);
// The member `key`, or `fallback` itself.
const Json::Value& At(const Json::Value& object, std::string_view key, const Json::Value& fallback);
// Like At with JSON null as fallback.
const Json::Value& At(const Json::Value& object, std::string_view key);
// Sets a member; false, and nothing changed, if `object` is neither an object
// nor null.
bool Set(Json::Value& object, std::string_view key, Json::Value value);
// True if the member was there.
bool Remove(Json::Value& object, std::string_view key);

// --- Elements ---

// The index of the first element of `array` that equals `value`, or
// Json::Value::maxUInt if there is none or `array` is no array.
Json::ArrayIndex SearchArrayIndex(const Json::Value& array, const Json::Value& value);

}  // namespace ORBO::JSON
