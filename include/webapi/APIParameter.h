#pragma once

#include <json/value.h>

#include <memory>
#include <string>

#include <webapi/Export.h>

namespace ORBO {

template <typename T>
struct APIParameterPrivate;

// Whether a parameter must be present: zero is required, anything else
// optional.  APIRequest has an enumeration of the same name and values of its
// own.
enum PARAM_NECESSITY : int {
  PARAM_REQUIRED = 0,
  PARAM_OPTIONAL = 1,
};

// A parameter's value with four flags that tell how it came about:
//
//   situation                         IsSet  IsReset  IsInvalid  Get(def)
//   missing, optional                 no     no       no         def
//   missing, required                 no     no       yes        def
//   present, JSON null                yes    yes      no         the zero of T
//   present, wrong type or range      yes    no       yes        def
//   present, refused by a validator   yes    no       yes        def
//   present and accepted              yes    no       no         the value
//   missing, then SetDefault(v)       yes    no       no         v (IsDefault)
//
// Text is never turned into a number or a boolean: the string "5" is no
// integer.  Nothing here logs, or sets an error on the response; no exception
// of the JSON library leaves ParseValue.  A value type: copies are independent.
//
// Exists for int, long long, unsigned int, unsigned long long, bool, double,
// std::string and Json::Value.
template <typename T>
class WEBAPI_EXPORT APIParameter {
 public:
  // True when the value is acceptable; null means that every value is.
  using Validator = bool (*)(const T& value);

  // Not set, not invalid, the zero of T (0, 0.0, false, "", JSON null).
  APIParameter();
  APIParameter(const APIParameter& other);
  APIParameter& operator=(const APIParameter& other);
  ~APIParameter();

  // The stored value, whatever the flags say.  Valid while this object lives
  // and is not assigned to.
  const T& Get() const;
  // `fallback` itself if the parameter is not set or is invalid, else the
  // stored value.
  const T& Get(const T& fallback) const;

  bool IsSet() const;
  bool IsReset() const;
  bool IsInvalid() const;
  bool IsDefault() const;

  // Each sets one flag; none clears any.
  void MarkSet();
  void MarkReset();
  void MarkInvalid();
  void MarkDefault();

  // Makes `value` the parameter's value if it was not given.  False, and
  // nothing changed, if the parameter is invalid; true otherwise.  A parameter
  // given as null counts as given.
  bool SetDefault(const T& value);

  // Converts `json` into the stored value.  False, and the value unchanged, if
  // its JSON type does not fit T or its number is out of T's range.  `type`
  // matters for Json::Value only: the exact JSON type to accept.  The flags are
  // not touched.
  bool ParseValue(const Json::Value& json, Json::ValueType type);

  // Marks the parameter set; null marks it reset and ends the check.  Then
  // parses, and asks `validator`; a refusal marks it invalid.
  void CheckValueTypeAndGet(const Json::Value& json, Json::ValueType type, Validator validator);

  // Compare the stored values only; flags play no part.
  bool operator==(const T& value) const;
  bool operator!=(const T& value) const;
  bool operator==(const APIParameter& other) const;
  bool operator!=(const APIParameter& other) const;

 private:
  std::unique_ptr<APIParameterPrivate<T>> private_;
};

extern template class APIParameter<int>;
extern template class APIParameter<long long>;
extern template class APIParameter<unsigned int>;
extern template class APIParameter<unsigned long long>;
extern template class APIParameter<bool>;
extern template class APIParameter<double>;
extern template class APIParameter<std::string>;
extern template class APIParameter<Json::Value>;

}  // namespace ORBO
