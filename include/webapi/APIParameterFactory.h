#pragma once

#include <json/value.h>

#include <string>

#include <webapi/APIParameter.h>
#include <webapi/Export.h>

namespace ORBO {

// Typed parameters out of any JSON object, for instance out of a parameter that
// is an object itself.
//
// Each operation looks up the member `name` of `json` (null counts as an empty
// object).  A missing member is invalid when required and left unset when
// optional; a container that is no object makes the parameter invalid whatever
// the necessity.
class WEBAPI_EXPORT APIParameterFactory {
 public:
  APIParameterFactory() = delete;

  // The member must be a JSON object.
  static APIParameter<Json::Value> ObjectFromJson(const Json::Value& json, const std::string& name,
                                                  PARAM_NECESSITY necessity,
                                                  bool (*validator)(const Json::Value&) = nullptr);

  // The member must be a JSON array.
  static APIParameter<Json::Value> ArrayFromJson(const Json::Value& json, const std::string& name,
                                                 PARAM_NECESSITY necessity,
                                                 bool (*validator)(const Json::Value&) = nullptr);
};

// The same for plain values.  Exists for int, long long, unsigned int,
// unsigned long long, bool, double and std::string.
template <typename T>
class WEBAPI_EXPORT APIParameterFactoryBasicImpl {
 public:
  APIParameterFactoryBasicImpl() = delete;

  static APIParameter<T> FromJson(const Json::Value& json, const std::string& name,
                                  PARAM_NECESSITY necessity, bool (*validator)(const T&) = nullptr);
};

extern template class APIParameterFactoryBasicImpl<int>;
extern template class APIParameterFactoryBasicImpl<long long>;
extern template class APIParameterFactoryBasicImpl<unsigned int>;
extern template class APIParameterFactoryBasicImpl<unsigned long long>;
extern template class APIParameterFactoryBasicImpl<bool>;
extern template class APIParameterFactoryBasicImpl<double>;
extern template class APIParameterFactoryBasicImpl<std::string>;

}  // namespace ORBO
