#include <webapi/APIParameterFactory.h>

#include "util/json_types.h"

namespace ORBO {
namespace {

template <typename T>
APIParameter<T> FromMember(const Json::Value& json, const std::string& name,
                           PARAM_NECESSITY necessity, Json::ValueType type,
                           bool (*validator)(const T&)) {
  APIParameter<T> parameter;
  const Json::Value* member = JSON::Find(json, name);
  if (member != nullptr) {
    parameter.CheckValueTypeAndGet(*member, type, validator);
  } else if (necessity == PARAM_REQUIRED || !JSON::IsObject(json)) {
    parameter.MarkInvalid();
  }
  return parameter;
}

}  // namespace

APIParameter<Json::Value> APIParameterFactory::ObjectFromJson(
    const Json::Value& json, const std::string& name, PARAM_NECESSITY necessity,
    bool (*validator)(const Json::Value&)) {
  return FromMember(json, name, necessity, Json::objectValue, validator);
}

APIParameter<Json::Value> APIParameterFactory::ArrayFromJson(
    const Json::Value& json, const std::string& name, PARAM_NECESSITY necessity,
    bool (*validator)(const Json::Value&)) {
  return FromMember(json, name, necessity, Json::arrayValue, validator);
}

template <typename T>
APIParameter<T> APIParameterFactoryBasicImpl<T>::FromJson(const Json::Value& json,
                                                          const std::string& name,
                                                          PARAM_NECESSITY necessity,
                                                          bool (*validator)(const T&)) {
  return FromMember(json, name, necessity, Json::nullValue, validator);
}

template class APIParameterFactoryBasicImpl<int>;
template class APIParameterFactoryBasicImpl<long long>;
template class APIParameterFactoryBasicImpl<unsigned int>;
template class APIParameterFactoryBasicImpl<unsigned long long>;
template class APIParameterFactoryBasicImpl<bool>;
template class APIParameterFactoryBasicImpl<double>;
template class APIParameterFactoryBasicImpl<std::string>;

}  // namespace ORBO
