#include <webapi/APIParameter.h>

#include "param/APIParameterPrivate.h"
#include "param/parameter_conversion.h"
#include "util/json_types.h"

namespace ORBO {

template <typename T>
APIParameter<T>::APIParameter() : private_(std::make_unique<APIParameterPrivate<T>>()) {}

template <typename T>
APIParameter<T>::APIParameter(const APIParameter& other)
    : private_(std::make_unique<APIParameterPrivate<T>>(*other.private_)) {}

// Into the existing private part: references that Get returned stay valid.
template <typename T>
APIParameter<T>& APIParameter<T>::operator=(const APIParameter& other) {
  *private_ = *other.private_;
  return *this;
}

template <typename T>
APIParameter<T>::~APIParameter() = default;

template <typename T>
const T& APIParameter<T>::Get() const {
  return private_->value;
}

template <typename T>
const T& APIParameter<T>::Get(const T& fallback) const {
  return private_->set && !private_->invalid ? private_->value : fallback;
}

template <typename T>
bool APIParameter<T>::IsSet() const {
  return private_->set;
}

template <typename T>
bool APIParameter<T>::IsReset() const {
  return private_->reset;
}

template <typename T>
bool APIParameter<T>::IsInvalid() const {
  return private_->invalid;
}

template <typename T>
bool APIParameter<T>::IsDefault() const {
  return private_->is_default;
}

template <typename T>
void APIParameter<T>::MarkSet() {
  private_->set = true;
}

template <typename T>
void APIParameter<T>::MarkReset() {
  private_->reset = true;
}

template <typename T>
void APIParameter<T>::MarkInvalid() {
  private_->invalid = true;
}

template <typename T>
void APIParameter<T>::MarkDefault() {
  private_->is_default = true;
}

template <typename T>
bool APIParameter<T>::SetDefault(const T& value) {
  if (private_->invalid) {
    return false;
  }
  if (private_->set) {
    return true;
  }
  private_->value = value;
  MarkDefault();
  MarkSet();
  return true;
}

template <typename T>
bool APIParameter<T>::ParseValue(const Json::Value& json, Json::ValueType type) {
  return ConvertParameter(json, type, private_->value);
}

template <typename T>
void APIParameter<T>::CheckValueTypeAndGet(const Json::Value& json, Json::ValueType type,
                                           Validator validator) {
  MarkSet();
  if (JSON::IsNull(json)) {
    MarkReset();
    return;
  }
  if (!ParseValue(json, type) || (validator != nullptr && !validator(private_->value))) {
    MarkInvalid();
  }
}

template <typename T>
bool APIParameter<T>::operator==(const T& value) const {
  return private_->value == value;
}

template <typename T>
bool APIParameter<T>::operator!=(const T& value) const {
  return private_->value != value;
}

template <typename T>
bool APIParameter<T>::operator==(const APIParameter& other) const {
  return private_->value == other.private_->value;
}

template <typename T>
bool APIParameter<T>::operator!=(const APIParameter& other) const {
  return private_->value != other.private_->value;
}

template class APIParameter<int>;
template class APIParameter<long long>;
template class APIParameter<unsigned int>;
template class APIParameter<unsigned long long>;
template class APIParameter<bool>;
template class APIParameter<double>;
template class APIParameter<std::string>;
template class APIParameter<Json::Value>;

}  // namespace ORBO
