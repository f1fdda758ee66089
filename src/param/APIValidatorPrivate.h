#pragma once

#include <regex.h>

#include <forward_list>
#include <map>
#include <string>

namespace ORBO {

// The compiled expressions of APIValidator.
class APIValidatorPrivate {
 public:
  APIValidatorPrivate() = default;
  ~APIValidatorPrivate();
  APIValidatorPrivate(const APIValidatorPrivate&) = delete;
  APIValidatorPrivate& operator=(const APIValidatorPrivate&) = delete;

  // Puts the compiled form of `pattern` into `out`, which stays valid as long as
  // this object.  False, and `out` unchanged, if either is null or the pattern
  // cannot be compiled; the latter is logged at every attempt.
  bool GetRegex(const char* pattern, regex_t** out);

  // Whether `pattern` matches in `value` up to its first NUL; false if it cannot
  // be compiled.
  bool CheckRegex(const std::string& value, const char* pattern);

 private:
  // By address, not by text: patterns are string constants, and comparing
  // pointers spares reading them.
  std::map<const char*, regex_t*> compiled_;
  // Every buffer ever compiled into.  What a failed regcomp leaves in one is
  // undefined, so those stay as they are too.
  std::forward_list<regex_t> buffers_;
};

}  // namespace ORBO
