#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "unit/json.h"
#include "util/json_scan.h"
#include "util/json_types.h"

namespace ORBO::JSON {
namespace {

// Scans a copy that ends exactly where the text does, so that a sanitizer sees
// every step beyond it.
bool Scan(const std::string& text, Comments comments = Comments::kRefused) {
  const std::unique_ptr<char[]> copy(new char[text.size()]);
  text.copy(copy.get(), text.size());
  return IsJson({copy.get(), text.size()}, comments);
}

std::string Nested(std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); }

// Whether all texts that `list` holds with "|" between them, and those of `more`,
// are taken or refused as `expected`.
void ExpectScans(bool expected, const std::string& list, std::vector<std::string> more) {
  std::istringstream stream(list);
  for (std::string text; std::getline(stream, text, '|');) {
    more.push_back(text);
  }
  for (const std::string& text : more) {
    SCOPED_TRACE(text);
    EXPECT_EQ(expected, Scan(text));
  }
}

TEST(JsonScan, AcceptsJson) {
  ExpectScans(true,
              R"(0|-0|10|-1.5|0.25e10|1E+2|1e-2|12345678901234567890123| null |true|""|"/'"|)"
              R"("\"\\\/\b\f\n\r\t\u00e9\uABCD"|"\ud83d\ude00"|)"
              R"([]|[ ]|[1, [2 ,"x"],{ }]|{}|{ "" : { "a":[],"a" :null} })",
              {"\t\r\nfalse\n", "\"\x7f\xff\"", Nested(kMaxDepth)});
}

TEST(JsonScan, RefusesAnythingElse) {
  ExpectScans(
      false,
      R"(| |+1|01|-|-01|.5|5.|1.e2|1e|1e+|0x1|1 2|1,|1a|nul|nulll|True|NaN|Infinity|'a'|)"
      R"("|"a|"\x"|"\|"\"|"\u"|"\u12"|"\u12g4"|"\ud83d"|"\ud83dx"|"\ud83d\n"|)"
      R"("\ud83d\u0041"|"\ud83d\ud83d"|"\ude00"|)"
      R"([|]|[1|[1,|[1,]|[,1]|[1 2]|[1}|[1]]|["a":1]|[1]// x|/* x */1|)"
      R"({|}|{"a"|{"a":|{"a":1|{"a":1,}|{"a" 1}|{"a",1}|{a:1}|{1:1}|{1}|{[]}|{"a":1,2}|{,}|{:1}|)"
      R"({"a":1]|{"a":})",
      {"\"a\nb\"", std::string("\"a\0b\"", 5), std::string("1\0", 2), "\xEF\xBB\xBF 1", "\xA0 1",
       "\v1", Nested(kMaxDepth + 1)});
  const std::string text =
      R"({"a": [1.5e3, "x\ud83d\ude00\n", {"b" : null}], "c":-12, "d":[true,{}]})";
  ASSERT_TRUE(Scan(text));
  for (std::size_t length = 0; length < text.size(); ++length) {
    EXPECT_FALSE(Scan(text.substr(0, length))) << length;
  }
}

TEST(JsonScan, SkipsCommentsWhereAllowed) {
  for (const char* text : {"// a\n[1, /* b\n */ 2 // c\n] // d", "/**//**/{/***/\"a\"//\n:/*/*/1}",
                           "\"// no comment\""}) {
    EXPECT_TRUE(Scan(text, Comments::kAllowed)) << text;
  }
  for (const char* text : {"[1] /* open", "[1] /*/", "[1] /", "[/ 1]", "1 / 2"}) {
    EXPECT_FALSE(Scan(text, Comments::kAllowed)) << text;
  }
}

TEST(JsonText, ParsesIntoTheTypeThatTheTextShows) {
  const std::tuple<const char*, Json::ValueType, const char*> rows[] = {
      {"-0", Json::intValue, "0"},
      {"-9223372036854775808", Json::intValue, "-9223372036854775808"},
      {"9223372036854775808", Json::uintValue, "9223372036854775808"},
      {"18446744073709551616", Json::realValue, "18446744073709551616.0"},
      {"-9223372036854775809", Json::realValue, "-9223372036854775808.0"},
      {"1.0", Json::realValue, "1.0"},
      {"0.00001e-320", Json::realValue, "0.0"},
      {"2.5e-320", Json::realValue, "2.5e-320"},
      {"0.1", Json::realValue, "0.1"},
      {"0.3333333333333333", Json::realValue, "0.3333333333333333"},
      {"1.7976931348623157e+308", Json::realValue, "1.7976931348623157e+308"},
      {R"("a\/\u00e9\u0000")", Json::stringValue, "\"a/\xC3\xA9\\u0000\""},
      {R"("\u20AC\ud83d\ude00\udbff\udfff")", Json::stringValue,
       "\"\xE2\x82\xAC\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF\""},
      {"[1,[2,[]],{}]", Json::arrayValue, "[1,[2,[]],{}]"},
      {R"({"b":1, "a":{"":[null]}, "\u0063":true})", Json::objectValue,
       R"({"a":{"":[null]},"b":1,"c":true})"},
      {R"({"a":[1],"a":{"x":1},"a":{"y":2}})", Json::objectValue, R"({"a":{"y":2}})"},
  };
  for (const auto& [text, type, written] : rows) {
    SCOPED_TRACE(text);
    Json::Value value;
    ASSERT_TRUE(Parse(text, value));
    EXPECT_EQ(type, value.type());
    EXPECT_EQ(written, ToText(value));
  }
  const std::string zeros(400, '0');
  for (const std::string& text :
       {std::string("[1,"), std::string("1e999"), "[-1" + zeros + "]", "1" + zeros + "e-50"}) {
    Json::Value value("before");
    EXPECT_FALSE(Parse(text, value)) << text;
    EXPECT_EQ(Json::Value("before"), value);
  }
}

TEST(JsonText, WritesValidUTF8) {
  const std::string whole =
      "\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xF0\x90\x80\x80\xF4\x8F\xBF\xBF";
  const std::pair<std::string, std::string> rows[] = {
      {std::string("\"\\/\b\f\n\r\t\x01\x1f\0\x7f", 12),
       std::string(R"(\"\\/\b\f\n\r\t\u0001\u001f\u0000)") + "\x7f"},
      {whole, whole},
      {"a\x80\xFF", "a??"},
      {"\xC0\xAF|\xE0\x9F\xBF|\xF0\x8F\xBF\xBF", "??|???|????"},
      {"\xED\xA0\x80|\xF4\x90\x80\x80|\xF5\x80", "???|????|??"},
      {"\xE2\x82|\xF0\x9F\x98|\xC3\"\xE2\x82", R"(?|?|?\"?)"},
  };
  for (const auto& [text, written] : rows) {
    // "?" stands for the replacement character here.
    std::string expected;
    for (const char c : written) {
      expected += c == '?' ? std::string("\xEF\xBF\xBD") : std::string(1, c);
    }
    EXPECT_EQ("\"" + expected + "\"", ToText(Json::Value(text)));
  }
}

TEST(JsonText, WritesWhatOnlyHandlersCanBuild) {
  Json::Value array(Json::arrayValue);
  array[1] = std::numeric_limits<double>::infinity();
  array[2] = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ("[null,null,null]", ToText(array));

  constexpr int kDepth = 20000;
  Json::Value root;
  Json::Value* inner = &root;
  for (int i = 0; i < kDepth; ++i) {
    inner = &inner->append(Json::Value());
  }
  EXPECT_EQ(std::string(kDepth, '[') + "null" + std::string(kDepth, ']'), ToText(root));
  // Taken apart level by level: the JSON library's destructor recurses.
  while (root.isArray() && !root.empty()) {
    Json::Value next;
    next.swap(root[0]);
    root.swap(next);
  }
}

TEST(JsonTypes, ConversionsNeverThrowAndGiveZeroForWhatDoesNotFit) {
  constexpr std::int64_t kMin64 = std::numeric_limits<std::int64_t>::min();
  const struct {
    const char* json;
    std::int32_t as_int;
    std::int64_t as_int64;
    std::uint64_t as_uint64;
    double as_double;
    bool as_bool;
    const char* as_string;
  } rows[] = {
      {"null", 0, 0, 0, 0, false, ""},
      {"true", 1, 1, 1, 1, true, "true"},
      {"-7", -7, -7, 0, -7, true, "-7"},
      {"4294967297", 0, 4294967297, 4294967297, 4294967297.0, true, "4294967297"},
      {"18446744073709551615", 0, 0, 18446744073709551615U, 0x1p64, true, "18446744073709551615"},
      {"2147483647.9", 2147483647, 2147483647, 2147483647, 2147483647.9, true, "2147483647.9"},
      {"2147483648.0", 0, 2147483648, 2147483648, 2147483648.0, true, "2147483648.0"},
      {"-2147483648.5", -2147483647 - 1, -2147483648, 0, -2147483648.5, true, "-2147483648.5"},
      {"9223372036854775808.0", 0, 0, 9223372036854775808U, 0x1p63, true, "9223372036854775808.0"},
      {"-9223372036854775808.0", 0, kMin64, 0, -0x1p63, true, "-9223372036854775808.0"},
      {"18446744073709551616.0", 0, 0, 0, 0x1p64, true, "18446744073709551616.0"},
      {"0.0", 0, 0, 0, 0, false, "0.0"},
      {R"("")", 0, 0, 0, 0, false, ""},
      {R"("+5")", 5, 5, 5, 0, true, "+5"},
      {R"("5 ")", 0, 0, 0, 0, true, "5 "},
      {R"("-")", 0, 0, 0, 0, true, "-"},
      {R"("-9223372036854775808")", 0, kMin64, 0, 0, true, "-9223372036854775808"},
      {R"("18446744073709551616")", 0, 0, 0, 0, true, "18446744073709551616"},
      {"[]", 0, 0, 0, 0, false, ""},
      {R"({"a":1})", 0, 0, 0, 0, true, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.json);
    const Json::Value value = FromText(row.json);
    EXPECT_EQ(row.as_int, AsInt(value));
    EXPECT_EQ(row.as_int64, AsInt64(value));
    EXPECT_EQ(row.as_uint64, AsUInt64(value));
    EXPECT_EQ(row.as_double, AsDouble(value));
    EXPECT_EQ(row.as_bool, AsBool(value));
    EXPECT_EQ(row.as_string, AsString(value));
  }
  const Json::Value not_a_number(std::numeric_limits<double>::quiet_NaN());
  EXPECT_EQ(0U, AsUInt64(not_a_number) | static_cast<std::uint64_t>(AsInt64(not_a_number)));
  EXPECT_EQ(0, AsInt(Json::Value(std::string("5\0", 2))));
  EXPECT_THROW(AsLargestInt(Json::Value(Json::UInt64{1} << 63)), std::runtime_error);
}

TEST(JsonTypes, TellsTypesByStorage) {
  const Json::Value null;
  EXPECT_TRUE(IsNull(null) && IsObject(null) && IsArray(null) && IsEmpty(null));
  EXPECT_TRUE(IsInt(1) && IsUInt(1U) && IsIntegral(1) && IsIntegral(1U) && IsNumeric(true));
  EXPECT_FALSE(IsInt(1U) || IsInt(1.0) || IsUInt(1) || IsIntegral(1.0) || IsIntegral(true));
  EXPECT_FALSE(IsEmpty("") || IsEmpty(FromText("[null]")) || IsNumeric("1") || IsBool(1));
}

TEST(JsonTypes, MembersOfTheWrongTypeAreMissing) {
  const Json::Value fallback("fallback");
  const std::string_view name("a\0b", 3);
  for (const char* text : {"null", "true", "1", "\"text\"", "[1]", "{}"}) {
    SCOPED_TRACE(text);
    Json::Value value = FromText(text);
    const Json::Value before = value;
    EXPECT_EQ(nullptr, Find(value, name));
    EXPECT_EQ(&fallback, &At(value, name, fallback));
    EXPECT_FALSE(Remove(value, name));
    EXPECT_EQ(before, value);
    EXPECT_EQ(IsObject(before), Set(value, name, 1));
    EXPECT_EQ(IsObject(before), Has(value, name));
    EXPECT_FALSE(Has(value, "a"));
    EXPECT_EQ(IsObject(before), Remove(value, name));
  }
}

}  // namespace
}  // namespace ORBO::JSON
