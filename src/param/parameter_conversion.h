#pragma once

#include <json/value.h>

#include <string>

// One conversion for each type that a parameter can have.  Each accepts only
// the JSON types that are named with it, never text in place of a number, and
// throws nothing of the JSON library.  A refusal is false and leaves `value` as
// it was.
namespace ORBO {

// A signed integer within the range of int.
bool ConvertParameter(const Json::Value& json, Json::ValueType type, int& value);
// An integer within the signed 64-bit range.
bool ConvertParameter(const Json::Value& json, Json::ValueType type, long long& value);
// Integers from zero up to the type's greatest value.
bool ConvertParameter(const Json::Value& json, Json::ValueType type, unsigned int& value);
bool ConvertParameter(const Json::Value& json, Json::ValueType type, unsigned long long& value);
// true and false, no numbers.
bool ConvertParameter(const Json::Value& json, Json::ValueType type, bool& value);
// Integers, reals and booleans.
bool ConvertParameter(const Json::Value& json, Json::ValueType type, double& value);
// Text, NUL included.
bool ConvertParameter(const Json::Value& json, Json::ValueType type, std::string& value);
// A value of exactly `type`; the others ignore that argument.
bool ConvertParameter(const Json::Value& json, Json::ValueType type, Json::Value& value);

}  // namespace ORBO
