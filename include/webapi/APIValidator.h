#pragma once

#include <json/value.h>

#include <memory>
#include <string>

#include <webapi/APIParameter.h>
#include <webapi/Export.h>

namespace ORBO {

class APIValidatorPrivate;

// Ready-made checks of parameters, for handlers and their check tables.
//
// None throws, logs a value or sets an error on a response: false is the whole
// answer.  The pattern checks share compiled expressions that live as long as
// the process and are not to be used from several threads at once.
class WEBAPI_EXPORT APIValidator {
 public:
  // The one instance of the process, made by the first call, from whatever
  // thread, and never destroyed.  The checks are static and need nobody to hold
  // it.
  static APIValidator* GetInstance();

  APIValidator(const APIValidator&) = delete;
  APIValidator& operator=(const APIValidator&) = delete;

  // --- Values; each can be passed as a validator to GetAndCheckString or
  // --- GetAndCheckInt

  // A host name (RFC 1123, section 2.1): labels of 1 to 63 ASCII letters, digits
  // and inner hyphens, at most 253 characters.  One label is enough; a dot may
  // end a name of several.  The last label is no number, so no name can be
  // mistaken for an IPv4 address.  Other scripts in their "xn--" form only
  // (RFC 5890).
  static bool IsHostname(const std::string& value);
  // The same with two labels at least.
  static bool IsDomain(const std::string& value);
  // An address in the form of inet_pton(3): IPv4 as four decimal numbers, IPv6
  // as in RFC 4291, section 2.2.  An IPv4 address within IPv6 ("::ffff:1.2.3.4")
  // is IPv6.  A link-local IPv6 address may name its zone ("fe80::1%eth0").
  static bool IsIP(const std::string& value);
  static bool IsIPv4(const std::string& value);
  static bool IsIPv6(const std::string& value);
  // 0 to 65535.
  static bool IsPort(const int& value);

  // --- Text by pattern, up to its first NUL; also usable as validators ---

  // Letters, digits and hyphens, one at least.
  static bool IsFarlinkId(const std::string& value);
  // Decimal digits, one at least.
  static bool IsDigit(const std::string& value);
  // A weak test: one character at least is none of ] [ ; : " < > * + \ / | ? ,
  // whatever the others are.
  static bool IsWorkGroup(const std::string& value);
  // A letter, then at most 254 letters, digits, hyphens and underscores.
  static bool IsNetbios(const std::string& value);
  // Text, "@" and text of the characters that mail addresses (RFC 5322) use, and
  // of some that they do not: a test for slips, not for deliverable addresses.
  static bool IsEMail(const std::string& value);
  // Whether the POSIX extended regular expression `pattern` matches somewhere in
  // `value`.  The compiled expression is kept by the address of `pattern`, whose
  // text must stay there unchanged as long as the process lives, as a string
  // constant does.  False, and logged, for a pattern that cannot be compiled;
  // false for null.
  static bool CheckRegex(const std::string& value, const char* pattern);

  // --- Parameters that have been read ---
  //
  // False for an invalid parameter.  None asks IsSet: a parameter that is
  // missing or null is checked with the zero of its type.

  // Whether the array `list` (null counts as an empty one) holds the parameter's
  // text as a JSON string.  False if `list` is no array.
  static bool IsBelong(const APIParameter<std::string>& parameter, const Json::Value& list);
  // Whether `list` holds every element of the parameter's array, or every member
  // value of its object.  True for a value without elements, numbers, text and
  // null included; false if `list` is no array.
  static bool IsBelong(const APIParameter<Json::Value>& parameter, const Json::Value& list);
  // min <= value <= max
  static bool IsBetween(const APIParameter<int>& parameter, int min, int max);
  // value > bound
  static bool IsGreater(const APIParameter<int>& parameter, int bound);
  // value < bound
  static bool IsLess(const APIParameter<int>& parameter, int bound);
  // Whether the stored value equals `value`; a NaN equals nothing.  Exists for
  // the types of APIParameter.
  template <typename T>
  static bool IsEqual(const APIParameter<T>& parameter, const T& value);
  // False for null.
  static bool IsEqual(const APIParameter<std::string>& parameter, const char* value);

 private:
  APIValidator();
  ~APIValidator();

  std::unique_ptr<APIValidatorPrivate> private_;
};

extern template bool APIValidator::IsEqual<int>(const APIParameter<int>&, const int&);
extern template bool APIValidator::IsEqual<long long>(const APIParameter<long long>&,
                                                      const long long&);
extern template bool APIValidator::IsEqual<unsigned int>(const APIParameter<unsigned int>&,
                                                         const unsigned int&);
extern template bool APIValidator::IsEqual<unsigned long long>(
    const APIParameter<unsigned long long>&, const unsigned long long&);
extern template bool APIValidator::IsEqual<bool>(const APIParameter<bool>&, const bool&);
extern template bool APIValidator::IsEqual<double>(const APIParameter<double>&, const double&);
extern template bool APIValidator::IsEqual<std::string>(const APIParameter<std::string>&,
                                                        const std::string&);
extern template bool APIValidator::IsEqual<Json::Value>(const APIParameter<Json::Value>&,
                                                        const Json::Value&);

}  // namespace ORBO
