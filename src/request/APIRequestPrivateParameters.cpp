#include "request/APIRequestPrivate.h"

#include "util/json_types.h"

namespace ORBO {
namespace {

constexpr char kSection[] = "param";

}  // namespace

template <typename T>
APIParameter<T> APIRequestPrivate::GetAndCheckParam(const std::string& name, bool required,
                                                    Json::ValueType type,
                                                    bool (*validator)(const T&)) {
  APIParameter<T> parameter;
  if (HasData(kSection, name)) {
    const Json::Value& value = GetData(kSection, name, Json::Value::nullSingleton());
    parameter.CheckValueTypeAndGet(value, type, validator);
  } else if (required) {
    parameter.MarkInvalid();
  }
  return parameter;
}

APIParameter<Json::Value> APIRequestPrivate::GetAndCheckUnitArrayParam(
    const std::string& name, bool required, bool (*validator)(const Json::Value&)) {
  APIParameter<Json::Value> parameter;
  if (HasData(kSection, name)) {
    const Json::Value& value = GetData(kSection, name, Json::Value::nullSingleton());
    // Null counts as an array, so it stays null and resets the parameter.
    if (JSON::IsArray(value)) {
      parameter.CheckValueTypeAndGet(value, Json::arrayValue, validator);
    } else {
      Json::Value unit(Json::arrayValue);
      unit.append(value);
      parameter.CheckValueTypeAndGet(unit, Json::arrayValue, validator);
    }
  } else if (required) {
    parameter.MarkInvalid();
  }
  return parameter;
}

template APIParameter<int> APIRequestPrivate::GetAndCheckParam(const std::string&, bool,
                                                               Json::ValueType,
                                                               bool (*)(const int&));
template APIParameter<long long> APIRequestPrivate::GetAndCheckParam(const std::string&, bool,
                                                                     Json::ValueType,
                                                                     bool (*)(const long long&));
template APIParameter<unsigned int> APIRequestPrivate::GetAndCheckParam(
    const std::string&, bool, Json::ValueType, bool (*)(const unsigned int&));
template APIParameter<unsigned long long> APIRequestPrivate::GetAndCheckParam(
    const std::string&, bool, Json::ValueType, bool (*)(const unsigned long long&));
template APIParameter<bool> APIRequestPrivate::GetAndCheckParam(const std::string&, bool,
                                                                Json::ValueType,
                                                                bool (*)(const bool&));
template APIParameter<double> APIRequestPrivate::GetAndCheckParam(const std::string&, bool,
                                                                  Json::ValueType,
                                                                  bool (*)(const double&));
template APIParameter<std::string> APIRequestPrivate::GetAndCheckParam(
    const std::string&, bool, Json::ValueType, bool (*)(const std::string&));
template APIParameter<Json::Value> APIRequestPrivate::GetAndCheckParam(
    const std::string&, bool, Json::ValueType, bool (*)(const Json::Value&));

}  // namespace ORBO
