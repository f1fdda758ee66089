#include "util/json_types.h"

#include <cmath>
#include <limits>
#include <stdexcept>
#include <utility>

#include "util/number_text.h"

namespace ORBO::JSON {
namespace {

// 2^63 and 2^64, the first reals beyond the ranges.
constexpr double kSignedBound = 9223372036854775808.0;
constexpr double kUnsignedBound = 18446744073709551616.0;

// The library's own number getters throw only on a type or range that does not
// fit; here each is called for the stored type alone.
std::int64_t Signed(const Json::Value& value) { return value.asLargestInt(); }
std::uint64_t Unsigned(const Json::Value& value) { return value.asLargestUInt(); }

// The number that `value` means, cut to an integer.  False if there is none
// within 64 bits.
bool ToInteger(const Json::Value& value, Integer& out) {
  switch (value.type()) {
    case Json::booleanValue:
      out = {false, value.asBool() ? 1U : 0U};
      return true;
    case Json::intValue: {
      const std::int64_t number = Signed(value);
      out.negative = number < 0;
      out.amount = out.negative ? ~static_cast<std::uint64_t>(number) + 1
                                : static_cast<std::uint64_t>(number);
      return true;
    }
    case Json::uintValue:
      out = {false, Unsigned(value)};
      return true;
    case Json::realValue: {
      const double cut = std::trunc(value.asDouble());
      // Also false for NaN.
      if (!(std::fabs(cut) < kUnsignedBound)) {
        return false;
      }
      out = {cut < 0, static_cast<std::uint64_t>(std::fabs(cut))};
      return true;
    }
    case Json::stringValue:
      return ReadInteger(StringView(value), out);
    default:
      return false;
  }
}

const char* Begin(std::string_view key) {
  // The library tells array elements from members by a null name.
  return key.data() != nullptr ? key.data() : "";
}

const char* End(std::string_view key) { return Begin(key) + key.size(); }

}  // namespace

bool IsObject(const Json::Value& value) {
  return value.type() == Json::objectValue || IsNull(value);
}

bool IsArray(const Json::Value& value) { return value.type() == Json::arrayValue || IsNull(value); }

bool IsInt(const Json::Value& value) { return value.type() == Json::intValue; }

bool IsUInt(const Json::Value& value) { return value.type() == Json::uintValue; }

bool IsIntegral(const Json::Value& value) { return IsInt(value) || IsUInt(value); }

bool IsNumeric(const Json::Value& value) {
  return IsIntegral(value) || IsBool(value) || value.type() == Json::realValue;
}

bool IsBool(const Json::Value& value) { return value.type() == Json::booleanValue; }

bool IsString(const Json::Value& value) { return value.type() == Json::stringValue; }

bool IsEmpty(const Json::Value& value) { return value.empty(); }

std::int32_t AsInt(const Json::Value& value) {
  const std::int64_t number = AsInt64(value);
  const auto cut = static_cast<std::int32_t>(number);
  return cut == number ? cut : 0;
}

std::int64_t AsInt64(const Json::Value& value) {
  Integer integer;
  std::int64_t number = 0;
  return ToInteger(value, integer) && ToSigned(integer, number) ? number : 0;
}

std::uint64_t AsUInt64(const Json::Value& value) {
  Integer integer;
  return ToInteger(value, integer) && !integer.negative ? integer.amount : 0;
}

std::int64_t AsLargestInt(const Json::Value& value) {
  if (IsUInt(value) && Unsigned(value) > std::numeric_limits<std::int64_t>::max()) {
    throw std::runtime_error("unsigned integer out of the signed range");
  }
  return AsInt64(value);
}

double AsDouble(const Json::Value& value) { return IsNumeric(value) ? value.asDouble() : 0.0; }

bool AsBool(const Json::Value& value) {
  switch (value.type()) {
    case Json::booleanValue:
      return value.asBool();
    case Json::intValue:
      return Signed(value) != 0;
    case Json::uintValue:
      return Unsigned(value) != 0;
    case Json::realValue:
      return value.asDouble() != 0.0;
    case Json::stringValue:
      return !StringView(value).empty();
    default:
      return !IsEmpty(value);
  }
}

std::string AsString(const Json::Value& value) {
  std::string text;
  switch (value.type()) {
    case Json::booleanValue:
      text = value.asBool() ? "true" : "false";
      break;
    case Json::intValue:
      AppendInteger(Signed(value), text);
      break;
    case Json::uintValue:
      AppendInteger(Unsigned(value), text);
      break;
    case Json::realValue:
      if (std::isfinite(value.asDouble())) {
        AppendReal(value.asDouble(), text);
      }
      break;
    case Json::stringValue:
      text = StringView(value);
      break;
    default:
      break;
  }
  return text;
}

std::string_view StringView(const Json::Value& value) {
  const char* begin = nullptr;
  const char* end = nullptr;
  if (!IsString(value) || !value.getString(&begin, &end)) {
    return {};
  }
  return {begin, static_cast<std::size_t>(end - begin)};
}

const Json::Value* Find(const Json::Value& object, std::string_view key) {
  return object.type() == Json::objectValue ? object.find(Begin(key), End(key)) : nullptr;
}

Json::Value* Find(Json::Value& object, std::string_view key) {
  return const_cast<Json::Value*>(Find(std::as_const(object), key));
}

bool Has(const Json::Value& object, std::string_view key) { return Find(object, key) != nullptr; }

const Json::Value& At(const Json::Value& object, std::string_view key,
                      const Json::Value& fallback) {
  const Json::Value* member = Find(object, key);
  return member != nullptr ? *member : fallback;
}

const Json::Value& At(const Json::Value& object, std::string_view key) {
  return At(object, key, Json::Value::nullSingleton());
}

bool Set(Json::Value& object, std::string_view key, Json::Value value) {
  if (!IsObject(object)) {
    return false;
  }
  *object.demand(Begin(key), End(key)) = std::move(value);
  return true;
}

bool Remove(Json::Value& object, std::string_view key) {
  return object.type() == Json::objectValue && object.removeMember(Begin(key), End(key), nullptr);
}

Json::ArrayIndex SearchArrayIndex(const Json::Value& array, const Json::Value& value) {
  const Json::ArrayIndex size = array.type() == Json::arrayValue ? array.size() : 0;
  for (Json::ArrayIndex index = 0; index < size; ++index) {
    if (array[index] == value) {
      return index;
    }
  }
  return Json::Value::maxUInt;
}

}  // namespace ORBO::JSON
