#include "util/json_types.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>

#include "unit/json.h"

namespace ORBO::JSON {
namespace {

constexpr std::int64_t kMin64 = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax64 = std::numeric_limits<std::int64_t>::max();
constexpr std::uint64_t kMaxU64 = std::numeric_limits<std::uint64_t>::max();

struct Conversion {
  Json::Value value;
  std::int32_t as_int;
  std::int64_t as_int64;
  std::uint64_t as_uint64;
  double as_double;
  bool as_bool;
  const char* as_string;
};

Json::Value Text(const char* text) { return Json::Value(text); }

TEST(JsonTypes, ConvertsNumbersAndText) {
  const double infinity = std::numeric_limits<double>::infinity();
  const Conversion rows[] = {
      {Json::Value(), 0, 0, 0, 0, false, ""},
      {true, 1, 1, 1, 1, true, "true"},
      {false, 0, 0, 0, 0, false, "false"},
      {-7, -7, -7, 0, -7, true, "-7"},
      {Json::Value(Json::Int64{1} << 32 | 1), 0, 4294967297, 4294967297, 4294967297.0, true,
       "4294967297"},
      {Json::Value(Json::Int64{kMin64}), 0, kMin64, 0, -9223372036854775808.0, true,
       "-9223372036854775808"},
      {Json::Value(Json::UInt64{kMaxU64}), 0, 0, kMaxU64, 18446744073709551616.0, true,
       "18446744073709551615"},
      {2147483647.9, 2147483647, 2147483647, 2147483647, 2147483647.9, true, "2147483647.9"},
      {2147483648.0, 0, 2147483648, 2147483648, 2147483648.0, true, "2147483648.0"},
      {-2147483648.5, std::numeric_limits<std::int32_t>::min(), -2147483648, 0, -2147483648.5, true,
       "-2147483648.5"},
      {-0.9, 0, 0, 0, -0.9, true, "-0.9"},
      {9223372036854775808.0, 0, 0, 9223372036854775808U, 9223372036854775808.0, true,
       "9223372036854775808.0"},
      {-9223372036854775808.0, 0, kMin64, 0, -9223372036854775808.0, true,
       "-9223372036854775808.0"},
      {18446744073709551616.0, 0, 0, 0, 18446744073709551616.0, true, "18446744073709551616.0"},
      {infinity, 0, 0, 0, infinity, true, ""},
      {-1e300, 0, 0, 0, -1e300, true, "-1e+300"},
      {Text(""), 0, 0, 0, 0, false, ""},
      {Text("12"), 12, 12, 12, 0, true, "12"},
      {Text("+5"), 5, 5, 5, 0, true, "+5"},
      {Text("-0"), 0, 0, 0, 0, true, "-0"},
      {Text("007"), 7, 7, 7, 0, true, "007"},
      {Text(" 5"), 0, 0, 0, 0, true, " 5"},
      {Text("5 "), 0, 0, 0, 0, true, "5 "},
      {Text("+-5"), 0, 0, 0, 0, true, "+-5"},
      {Text("-"), 0, 0, 0, 0, true, "-"},
      {Text("0x10"), 0, 0, 0, 0, true, "0x10"},
      {Text("1.5"), 0, 0, 0, 0, true, "1.5"},
      {Text("-9223372036854775808"), 0, kMin64, 0, 0, true, "-9223372036854775808"},
      {Text("9223372036854775808"), 0, 0, 9223372036854775808U, 0, true, "9223372036854775808"},
      {Text("18446744073709551616"), 0, 0, 0, 0, true, "18446744073709551616"},
      {FromText("[]"), 0, 0, 0, 0, false, ""},
      {FromText("[0]"), 0, 0, 0, 0, true, ""},
      {FromText("{}"), 0, 0, 0, 0, false, ""},
      {FromText("{\"a\":1}"), 0, 0, 0, 0, true, ""},
  };
  for (const Conversion& row : rows) {
    SCOPED_TRACE(ToText(row.value));
    EXPECT_EQ(row.as_int, AsInt(row.value));
    EXPECT_EQ(row.as_int64, AsInt64(row.value));
    EXPECT_EQ(row.as_uint64, AsUInt64(row.value));
    EXPECT_EQ(row.as_double, AsDouble(row.value));
    EXPECT_EQ(row.as_bool, AsBool(row.value));
    EXPECT_EQ(row.as_string, AsString(row.value));
  }
  const Json::Value not_a_number(std::numeric_limits<double>::quiet_NaN());
  EXPECT_EQ(0, AsInt64(not_a_number));
  EXPECT_EQ(0U, AsUInt64(not_a_number));
}

TEST(JsonTypes, KeepsNulInText) {
  const std::string text("5\0x", 3);
  EXPECT_EQ(text, AsString(Json::Value(text)));
  EXPECT_EQ(text, StringView(Json::Value(text)));
  EXPECT_EQ(0, AsInt(Json::Value(std::string("5\0", 2))));
}

TEST(JsonTypes, LargestIntRefusesWhatIsAboveTheSignedRange) {
  EXPECT_EQ(kMax64, AsLargestInt(Json::Value(Json::UInt64{kMax64})));
  EXPECT_THROW(AsLargestInt(Json::Value(Json::UInt64{kMax64} + 1)), std::runtime_error);
  EXPECT_EQ(0, AsLargestInt(Json::Value("x")));
}

TEST(JsonTypes, TellsTypesByStorage) {
  const struct {
    Json::Value value;
    const char* types;  // null, object, array, int, uint, integral, numeric, bool, string, empty
  } rows[] = {
      {Json::Value(), "n o a e"},
      {FromText("{}"), "o e"},
      {FromText("{\"a\":1}"), "o"},
      {FromText("[]"), "a e"},
      {FromText("[null]"), "a"},
      {1, "i I N"},
      {1U, "u I N"},
      {1.0, "N"},
      {true, "N b"},
      {"", "s"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(ToText(row.value));
    const Json::Value& value = row.value;
    std::string types;
    const auto note = [&types](bool holds, const char* name) {
      types += holds ? (types.empty() ? "" : " ") + std::string(name) : "";
    };
    note(IsNull(value), "n");
    note(IsObject(value), "o");
    note(IsArray(value), "a");
    note(IsInt(value), "i");
    note(IsUInt(value), "u");
    note(IsIntegral(value), "I");
    note(IsNumeric(value), "N");
    note(IsBool(value), "b");
    note(IsString(value), "s");
    note(IsEmpty(value), "e");
    EXPECT_EQ(row.types, types);
  }
}

TEST(JsonTypes, MembersOfTheWrongTypeAreMissing) {
  const Json::Value fallback("fallback");
  for (const char* text : {"null", "true", "1", "\"text\"", "[1]", "{}"}) {
    SCOPED_TRACE(text);
    Json::Value value = FromText(text);
    const Json::Value before = value;
    EXPECT_EQ(nullptr, Find(value, "a"));
    EXPECT_EQ(&fallback, &At(value, "a", fallback));
    EXPECT_TRUE(IsNull(At(value, "a")));
    EXPECT_FALSE(Remove(value, "a"));
    EXPECT_EQ(before, value);
    EXPECT_EQ(IsObject(before), Set(value, "a", 1));
    EXPECT_EQ(IsObject(before), Has(value, "a"));
  }
}

TEST(JsonTypes, MembersMayHaveAnyName) {
  Json::Value object;
  const std::string_view names[] = {{}, std::string_view("a\0b", 3), "a"};
  for (const std::string_view name : names) {
    EXPECT_FALSE(Has(object, name));
    EXPECT_TRUE(Set(object, name, "x"));
    EXPECT_EQ("x", StringView(At(object, name)));
  }
  EXPECT_EQ(R"({"":"x","a":"x","a\u0000b":"x"})", ToText(object));
  for (const std::string_view name : names) {
    EXPECT_TRUE(Remove(object, name));
  }
  EXPECT_TRUE(IsEmpty(object));
}

}  // namespace
}  // namespace ORBO::JSON
