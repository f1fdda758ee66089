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
  const std::string deepest = Repeat("[", 512) + Repeat("]", 512);
  const std::pair<std::string, std::string> rows[] = {
      {"&&", "null"},
      {"a=012&b=+1&c=1x&d=[1,]&e=True&f=-&g=NaN",
       R"({"a":"012","b":" 1","c":"1x","d":"[1,]","e":"True","f":"-","g":"NaN"})"},
      {"a=[1]//x&b=/**/1&c=1e999&d=\"a", R"({"a":"[1]//x","b":"/**/1","c":"1e999","d":"\"a"})"},
      {"a&b=&=v&c=d=e&&f==", R"({"":"v","a":"","b":"","c":"d=e","f":"="})"},
      {"a=1&a=&a=3", R"({"a":3})"},
      {"deep=" + deepest, "{\"deep\":" + deepest + "}"},
      {"deep=[" + deepest + "]", "{\"deep\":\"[" + deepest + "]\"}"},
  };
  for (const auto& [line, json] : rows) {
    Json::Value target;
    EXPECT_TRUE(strPairToJsonObj(line, target, true, true));
    EXPECT_EQ(json, JSON::ToText(target));
  }
  Json::Value target;
  EXPECT_TRUE(strPairToJsonObj("a+b=%31&c=1", target, false, true));
  EXPECT_TRUE(strPairToJsonObj("d+e=%31&f=1", target, true, false));
  EXPECT_EQ(R"({"a+b":"%31","c":1,"d e":"1","f":"1"})", JSON::ToText(target));
}

TEST(ParamLine, RefusedLinesChangeNothing) {
  const std::tuple<const char*, std::string, bool> rows[] = {
      {"most pairs", Repeat("a&", 4095) + "&&b=2", true},
      {"too many pairs", Repeat("a=1&", 4096) + "b=2", false},
      {"too many values", "a=[" + Repeat("0,", 1 << 18) + "0]", false},
      {"too many values in all", Repeat("c=[" + Repeat("[],", 4096) + "0]&", 64) + "b=2", false},
      {"commas in a text", "a=&b=2&b=[\"\\\"" + Repeat(",", 1 << 18) + "\"]&b=2", true},
  };
  for (const auto& [name, line, expected] : rows) {
    SCOPED_TRACE(name);
    Json::Value target = FromText(R"({"x":1})");
    EXPECT_EQ(expected, strPairToJsonObj(line, target, true, true));
    EXPECT_EQ(expected ? R"({"a":"","b":2,"x":1})" : R"({"x":1})", JSON::ToText(target));
  }
  Json::Value no_object = FromText("[1]");
  EXPECT_FALSE(strPairToJsonObj("a=1", no_object, true, true));
}

TEST(URLCodec, LeavesMalformedEscapesAloneAndReadsBackWhatItWrote) {
  EXPECT_EQ(std::string("a b/%4g%g4%A%41+\0\xFF%4", 20),
            URLDecode("a%20b%2f%4g%g4%%41%2541+%00%FF%4", true));
  EXPECT_EQ("a b+%", URLDecode("a+b%2B%", false));
  EXPECT_EQ("AZaz09-._~%20%2B%2F%25%00%C3%A9",
            URLEncode(std::string("AZaz09-._~ +/%\0\xC3\xA9", 17)));
}

TEST(ParseToArray, TrimsThePieces) {
  EXPECT_EQ(R"(["a=1","","","b=2",""])", JSON::ToText(ParseToArray(" a=1 \t;; \t ;b=2;", ";")));
  EXPECT_EQ(R"(["a;b"])", JSON::ToText(ParseToArray("a;b", "")));
}

}  // namespace
}  // namespace ORBO::WebAPIUtil
