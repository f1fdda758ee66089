#include "param/APIValidatorPrivate.h"

#include <locale.h>

#include "util/log.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "APIValidator.cpp";
constexpr int kInvalidPatternLine = 56;  // prescribed for this message

// While it lives, the locale has nothing to say about which bytes are letters.
class PlainLocaleGuard {
 public:
  PlainLocaleGuard() : plain_(newlocale(LC_ALL_MASK, "C", nullptr)), previous_(uselocale(plain_)) {}
  ~PlainLocaleGuard() {
    uselocale(previous_);
    if (plain_ != nullptr) {
      freelocale(plain_);
    }
  }
  PlainLocaleGuard(const PlainLocaleGuard&) = delete;
  PlainLocaleGuard& operator=(const PlainLocaleGuard&) = delete;

 private:
  locale_t plain_;
  locale_t previous_;
};

}  // namespace

APIValidatorPrivate::~APIValidatorPrivate() {
  for (const auto& [pattern, regex] : compiled_) {
    regfree(regex);
  }
}

bool APIValidatorPrivate::GetRegex(const char* pattern, regex_t** out) {
  if (pattern == nullptr || out == nullptr) {
    return false;
  }
  const auto known = compiled_.find(pattern);
  if (known != compiled_.end()) {
    *out = known->second;
    return true;
  }
  const PlainLocaleGuard plain;
  regex_t& regex = buffers_.emplace_front();
  if (regcomp(&regex, pattern, REG_EXTENDED | REG_NOSUB) != 0) {
    Log(LOG_ERR, "%s:%d Invalid pattern", kSource, kInvalidPatternLine);
    return false;
  }
  compiled_[pattern] = &regex;
  *out = &regex;
  return true;
}

bool APIValidatorPrivate::CheckRegex(const std::string& value, const char* pattern) {
  regex_t* regex = nullptr;
  return GetRegex(pattern, &regex) && regex != nullptr &&
         regexec(regex, value.c_str(), 0, nullptr, 0) == 0;
}

}  // namespace ORBO
