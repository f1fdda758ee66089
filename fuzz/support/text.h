#pragma once

#include <json/value.h>

#include <algorithm>
#include <string>

#include "util/json_text.h"

namespace ORBO {

inline std::size_t CountOf(const std::string& text, char wanted) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), wanted));
}

// The JSON value that `text` is, and `text` itself as a string if it is none.
inline Json::Value ValueOf(const std::string& text) {
  Json::Value value(text);
  JSON::Parse(text, value);
  return value;
}

}  // namespace ORBO
