#pragma once

#include <gtest/gtest.h>
#include <json/value.h>

#include <string>

#include "util/json_text.h"

namespace ORBO {

// `text` as a value; the test fails if it is no JSON.
inline Json::Value FromText(const std::string& text) {
  Json::Value value;
  EXPECT_TRUE(JSON::Parse(text, value)) << text;
  return value;
}

}  // namespace ORBO
