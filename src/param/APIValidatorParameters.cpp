#include <webapi/APIValidator.h>

#include <algorithm>

#include "util/json_types.h"

namespace ORBO {
namespace {

bool Holds(const Json::Value& list, const Json::Value& value) {
  return JSON::SearchArrayIndex(list, value) != Json::Value::maxUInt;
}

}  // namespace

bool APIValidator::IsBelong(const APIParameter<std::string>& parameter, const Json::Value& list) {
  return !parameter.IsInvalid() && Holds(list, Json::Value(parameter.Get()));
}

bool APIValidator::IsBelong(const APIParameter<Json::Value>& parameter, const Json::Value& list) {
  // Values without elements have an empty range, whatever their type.
  const Json::Value& value = parameter.Get();
  return !parameter.IsInvalid() && JSON::IsArray(list) &&
         std::all_of(value.begin(), value.end(),
                     [&list](const Json::Value& element) { return Holds(list, element); });
}

bool APIValidator::IsBetween(const APIParameter<int>& parameter, int min, int max) {
  return !parameter.IsInvalid() && min <= parameter.Get() && parameter.Get() <= max;
}

bool APIValidator::IsGreater(const APIParameter<int>& parameter, int bound) {
  return !parameter.IsInvalid() && parameter.Get() > bound;
}

bool APIValidator::IsLess(const APIParameter<int>& parameter, int bound) {
  return !parameter.IsInvalid() && parameter.Get() < bound;
}

template <typename T>
bool APIValidator::IsEqual(const APIParameter<T>& parameter, const T& value) {
  return !parameter.IsInvalid() && parameter == value;
}

template bool APIValidator::IsEqual(const APIParameter<int>&, const int&);
template bool APIValidator::IsEqual(const APIParameter<long long>&, const long long&);
template bool APIValidator::IsEqual(const APIParameter<unsigned int>&, const unsigned int&);
template bool APIValidator::IsEqual(const APIParameter<unsigned long long>&,
                                    const unsigned long long&);
template bool APIValidator::IsEqual(const APIParameter<bool>&, const bool&);
template bool APIValidator::IsEqual(const APIParameter<double>&, const double&);
template bool APIValidator::IsEqual(const APIParameter<std::string>&, const std::string&);
template bool APIValidator::IsEqual(const APIParameter<Json::Value>&, const Json::Value&);

bool APIValidator::IsEqual(const APIParameter<std::string>& parameter, const char* value) {
  return value != nullptr && IsEqual(parameter, std::string(value));
}

}  // namespace ORBO
