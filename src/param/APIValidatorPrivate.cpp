#include "param/APIValidatorPrivate.h"

#include "util/log.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "APIValidator.cpp";
constexpr int kInvalidPatternLine = 56;  // prescribed for this message

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
