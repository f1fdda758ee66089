#include <gtest/gtest.h>

#include <string>

#include "platform/webapi_util.h"
#include "unit/json.h"

namespace ORBO::WebAPIUtil {
namespace {

std::string Repeat(const std::string& text, int count) {
  std::string result;
  for (int i = 0; i < count; ++i) {
    result += text;
  }
  return result;
}

TEST(ParamLine, ValuesAreJsonWhereTheyAreExactlyThat) {
  const struct {
    std::string line;
    std::string json;
  } rows[] = {
      {"", "null"},
      {"&&", "null"},
      {"limit=10&name=abc&quoted=\"10\"", R"({"limit":10,"name":"abc","quoted":"10"})"},
      {"a=true&b=null&c=1.5&d=[1,{\"x\":2}]&e=%7B%7D",
       R"({"a":true,"b":null,"c":1.5,"d":[1,{"x":2}],"e":{}})"},
      {"a=012&b=+1&c=1x&d=[1,]&e=True&f=-&g=NaN",
       R"({"a":"012","b":" 1","c":"1x","d":"[1,]","e":"True","f":"-","g":"NaN"})"},
      {"a=[1]//x&b=/**/1&c=1e999&d=\"a", R"({"a":"[1]//x","b":"/**/1","c":"1e999","d":"\"a"})"},
      {"a&b=&=v&c=d=e&&f==", R"({"":"v","a":"","b":"","c":"d=e","f":"="})"},
      {"a=1&a=&a=3", R"({"a":3})"},
      {"a+b=c+d%2Be&%61%3D%26=%3d%26", R"({"a b":"c d+e","a=&":"=&"})"},
      {"a=%&b=%4&c=%zz&d=%41%&e=%%41", R"({"a":"%","b":"%4","c":"%zz","d":"A%","e":"%A"})"},
      {"a=x%00y&b%00=1&c=%001", R"({"a":"x\u0000y","b\u0000":1,"c":"\u00001"})"},
      {"deep=" + Repeat("[", 512) + Repeat("]", 512),
       "{\"deep\":" + Repeat("[", 512) + Repeat("]", 512) + "}"},
      {"deep=" + Repeat("[", 513) + Repeat("]", 513),
       "{\"deep\":\"" + Repeat("[", 513) + Repeat("]", 513) + "\"}"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.line.substr(0, 80));
    Json::Value target;
    EXPECT_TRUE(strPairToJsonObj(row.line, target, true, true));
    EXPECT_EQ(row.json, JSON::ToText(target));
  }
}

TEST(ParamLine, FlagsTurnDecodingAndTypesOff) {
  Json::Value target;
  EXPECT_TRUE(strPairToJsonObj("a+b=%31&c=1", target, false, true));
  EXPECT_EQ(R"({"a+b":"%31","c":1})", JSON::ToText(target));
  target = Json::Value();
  EXPECT_TRUE(strPairToJsonObj("a+b=%31&c=1", target, true, false));
  EXPECT_EQ(R"({"a b":"1","c":"1"})", JSON::ToText(target));
}

TEST(ParamLine, RefusedLinesChangeNothing) {
  const struct {
    const char* name;
    std::string line;
    const char* target;
    bool expected;
  } rows[] = {
      {"most pairs", Repeat("a&", 4095) + "&&b=2", R"({"x":1})", true},
      {"too many pairs", Repeat("a=1&", 4096) + "b=2", R"({"x":1})", false},
      {"too many values", "a=[" + Repeat("0,", 1 << 18) + "0]", R"({"x":1})", false},
      {"too many values in all", Repeat("c=[" + Repeat("[],", 4096) + "0]&", 64) + "b=2",
       R"({"x":1})", false},
      {"commas in a text", "a=&b=2&b=[\"" + Repeat(",", 1 << 18) + "\\\"[\"]&b=2", R"({"x":1})",
       true},
      {"array", "a=1", "[1]", false},
      {"text", "a=1", "\"x\"", false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Json::Value target = FromText(row.target);
    EXPECT_EQ(row.expected, strPairToJsonObj(row.line, target, true, true));
    EXPECT_EQ(row.expected ? R"({"a":"","b":2,"x":1})" : row.target, JSON::ToText(target));
  }
}

}  // namespace
}  // namespace ORBO::WebAPIUtil
