#include <webapi/APIRequest.h>

#include "request/APIRequestPrivate.h"

namespace ORBO {

APIParameter<int> APIRequest::GetAndCheckInt(const std::string& name, PARAM_NECESSITY necessity,
                                             bool (*validator)(const int&)) {
  return private_->GetAndCheckParam(name, necessity == PARAM_REQUIRED, Json::intValue, validator);
}

APIParameter<bool> APIRequest::GetAndCheckBool(const std::string& name, PARAM_NECESSITY necessity,
                                               bool (*validator)(const bool&)) {
  return private_->GetAndCheckParam(name, necessity == PARAM_REQUIRED, Json::booleanValue,
                                    validator);
}

APIParameter<double> APIRequest::GetAndCheckReal(const std::string& name, PARAM_NECESSITY necessity,
                                                 bool (*validator)(const double&)) {
  return private_->GetAndCheckParam(name, necessity == PARAM_REQUIRED, Json::realValue, validator);
}

APIParameter<std::string> APIRequest::GetAndCheckString(const std::string& name,
                                                        PARAM_NECESSITY necessity,
                                                        bool (*validator)(const std::string&)) {
  return private_->GetAndCheckParam(name, necessity == PARAM_REQUIRED, Json::stringValue,
                                    validator);
}

APIParameter<Json::Value> APIRequest::GetAndCheckObject(const std::string& name,
                                                        PARAM_NECESSITY necessity,
                                                        bool (*validator)(const Json::Value&)) {
  return private_->GetAndCheckParam(name, necessity == PARAM_REQUIRED, Json::objectValue,
                                    validator);
}

APIParameter<Json::Value> APIRequest::GetAndCheckArray(const std::string& name,
                                                       PARAM_NECESSITY necessity,
                                                       bool (*validator)(const Json::Value&)) {
  return private_->GetAndCheckParam(name, necessity == PARAM_REQUIRED, Json::arrayValue, validator);
}

template <typename T>
APIParameter<T> APIRequest::GetAndCheckIntegral(const std::string& name, PARAM_NECESSITY necessity,
                                                bool (*validator)(const T&)) {
  return private_->GetAndCheckParam(name, necessity == PARAM_REQUIRED, Json::objectValue,
                                    validator);
}

APIParameter<Json::Value> APIRequest::GetAndCheckUnitArray(const std::string& name,
                                                           PARAM_NECESSITY necessity,
                                                           bool (*validator)(const Json::Value&)) {
  return private_->GetAndCheckUnitArrayParam(name, necessity == PARAM_REQUIRED, validator);
}

template APIParameter<long long> APIRequest::GetAndCheckIntegral(const std::string&,
                                                                 PARAM_NECESSITY,
                                                                 bool (*)(const long long&));
template APIParameter<unsigned int> APIRequest::GetAndCheckIntegral(const std::string&,
                                                                    PARAM_NECESSITY,
                                                                    bool (*)(const unsigned int&));
template APIParameter<unsigned long long> APIRequest::GetAndCheckIntegral(
    const std::string&, PARAM_NECESSITY, bool (*)(const unsigned long long&));

}  // namespace ORBO
