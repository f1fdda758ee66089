#include "util/json_text.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "util/json_types.h"

namespace ORBO::JSON {
namespace {

TEST(JsonText, ParsesIntoTheTypeThatTheTextShows) {
  const struct {
    const char* text;
    Json::ValueType type;
    const char* written;
  } rows[] = {
      {"null", Json::nullValue, "null"},
      {" true ", Json::booleanValue, "true"},
      {"false", Json::booleanValue, "false"},
      {"-0", Json::intValue, "0"},
      {"9223372036854775807", Json::intValue, "9223372036854775807"},
      {"-9223372036854775808", Json::intValue, "-9223372036854775808"},
      {"9223372036854775808", Json::uintValue, "9223372036854775808"},
      {"18446744073709551615", Json::uintValue, "18446744073709551615"},
      {"18446744073709551616", Json::realValue, "18446744073709551616.0"},
      {"-9223372036854775809", Json::realValue, "-9223372036854775808.0"},
      {"1.0", Json::realValue, "1.0"},
      {"-0.0", Json::realValue, "-0.0"},
      {"1e3", Json::realValue, "1000.0"},
      {"0.1", Json::realValue, "0.1"},
      {"1e-999", Json::realValue, "0.0"},
      {"0.00001e-320", Json::realValue, "0.0"},
      {"2.5e-320", Json::realValue, "2.5e-320"},
      {"\"\"", Json::stringValue, "\"\""},
      {R"("a\/\u00e9\u0000")", Json::stringValue, "\"a/\xC3\xA9\\u0000\""},
      {"[ ]", Json::arrayValue, "[]"},
      {"[1,[2,[]],{}]", Json::arrayValue, "[1,[2,[]],{}]"},
      {R"({"b":1, "a":{"":[null]}, "\u0063":2})", Json::objectValue,
       R"({"a":{"":[null]},"b":1,"c":2})"},
      {R"({"a":[1],"a":{"x":1},"a":{"y":2}})", Json::objectValue, R"({"a":{"y":2}})"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    Json::Value value;
    ASSERT_TRUE(Parse(row.text, value));
    EXPECT_EQ(row.type, value.type());
    EXPECT_EQ(row.written, ToText(value));
  }
}

TEST(JsonText, LeavesTheValueAloneWhereParsingFails) {
  const std::string zeros(400, '0');
  for (const std::string& text : {std::string("[1,"), std::string("1e999"), "[-1" + zeros + "]",
                                  "1" + zeros + "e-50", std::string("/**/1")}) {
    SCOPED_TRACE(text);
    Json::Value value("before");
    EXPECT_FALSE(Parse(text, value));
    EXPECT_EQ(Json::Value("before"), value);
  }
  Json::Value value;
  EXPECT_TRUE(Parse("{ // x\n\"a\" /**/ : [ 1 , /*,*/ 2 ] }", value, Comments::kAllowed));
  EXPECT_EQ("{\"a\":[1,2]}", ToText(value));
}

TEST(JsonText, WritesValidUTF8) {
  const struct {
    const char* name;
    std::string text;
    std::string written;
  } rows[] = {
      {"escapes", std::string("\"\\/\b\f\n\r\t\x01\x1f\0\x7f", 12),
       R"(\"\\/\b\f\n\r\t\u0001\u001f\u0000)"
       "\x7f"},
      {"kept",
       "\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xF0\x90\x80\x80\xF4\x8F\xBF\xBF",
       "\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
      {"stray bytes",
       "a\x80\xFF"
       "b",
       "a??b"},
      {"overlong", "\xC0\xAF|\xE0\x9F\xBF|\xF0\x8F\xBF\xBF", "??|???|????"},
      {"surrogate", "\xED\xA0\x80", "???"},
      {"too large", "\xF4\x90\x80\x80|\xF5\x80", "????|??"},
      {"cut short", "\xE2\x82|\xF0\x9F\x98|\xC3\"\xE2\x82", R"(?|?|?\"?)"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    // "?" stands for the replacement character here.
    std::string expected;
    for (const char c : row.written) {
      expected += c == '?' ? std::string("\xEF\xBF\xBD") : std::string(1, c);
    }
    EXPECT_EQ("\"" + expected + "\"", ToText(Json::Value(row.text)));
  }
}

TEST(JsonText, WritesWhatOnlyHandlersCanBuild) {
  Json::Value array(Json::arrayValue);
  array[2] = std::numeric_limits<double>::infinity();
  array[4] = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ("[null,null,null,null,null]", ToText(array));
  EXPECT_EQ("{\"a\":\"x\"}", ToText([] {
              Json::Value object;
              object[std::string("a")] = Json::StaticString("x");
              return object;
            }()));
  std::string text = "before ";
  Append(Json::Value(Json::objectValue), text);
  EXPECT_EQ("before {}", text);
}

TEST(JsonText, WritesDeepValues) {
  constexpr int kDepth = 20000;
  Json::Value root;
  Json::Value* inner = &root;
  for (int i = 0; i < kDepth; ++i) {
    inner = &inner->append(Json::Value());
  }
  EXPECT_EQ(std::string(kDepth, '[') + "null" + std::string(kDepth, ']'), ToText(root));
  // The library's own destructor recurses; the value is taken apart from inside.
  while (root.size() > 0) {
    Json::Value next;
    next.swap(root[0]);
    root.swap(next);
  }
}

TEST(JsonText, ReadsBackWhatItWrote) {
  for (const double real : {0.1, 1.0 / 3, 1e22, 123456789012345680.0, 5e-324,
                            std::numeric_limits<double>::max(), -2.2250738585072014e-308}) {
    SCOPED_TRACE(real);
    Json::Value value;
    ASSERT_TRUE(Parse(ToText(real), value));
    EXPECT_EQ(Json::realValue, value.type());
    EXPECT_EQ(real, AsDouble(value));
  }
}

}  // namespace
}  // namespace ORBO::JSON
