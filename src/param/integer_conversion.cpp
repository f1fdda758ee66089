#include "param/parameter_conversion.h"

#include <cstdint>
#include <limits>
#include <stdexcept>

#include "util/json_types.h"

namespace ORBO {
namespace {

// Reads an integer that is not below zero.
bool ReadUnsigned(const Json::Value& json, std::uint64_t& number) {
  if (!JSON::IsIntegral(json)) {
    return false;
  }
  if (JSON::IsInt(json) && JSON::AsInt64(json) < 0) {
    return false;
  }
  number = JSON::AsUInt64(json);
  return true;
}

}  // namespace

bool ConvertParameter(const Json::Value& json, Json::ValueType /*type*/, int& value) {
  if (!JSON::IsInt(json)) {
    return false;
  }
  const std::int64_t number = JSON::AsInt64(json);
  if (number < std::numeric_limits<int>::min() || number > std::numeric_limits<int>::max()) {
    return false;
  }
  value = static_cast<int>(number);
  return true;
}

bool ConvertParameter(const Json::Value& json, Json::ValueType /*type*/, long long& value) {
  if (!JSON::IsIntegral(json)) {
    return false;
  }
  try {
    value = JSON::AsLargestInt(json);
  } catch (const std::runtime_error&) {
    return false;
  }
  return true;
}

bool ConvertParameter(const Json::Value& json, Json::ValueType /*type*/, unsigned int& value) {
  std::uint64_t number = 0;
  if (!ReadUnsigned(json, number) || number > std::numeric_limits<unsigned int>::max()) {
    return false;
  }
  value = static_cast<unsigned int>(number);
  return true;
}

bool ConvertParameter(const Json::Value& json, Json::ValueType /*type*/,
                      unsigned long long& value) {
  std::uint64_t number = 0;
  if (!ReadUnsigned(json, number)) {
    return false;
  }
  value = number;
  return true;
}

}  // namespace ORBO
