#include <gtest/gtest.h>
#include <webapi/APIParameter.h>
#include <webapi/APIParameterFactory.h>

#include <limits>
#include <string>
#include <vector>

#include "unit/json.h"

namespace ORBO {
namespace {

template <typename T>
struct Accepted {
  const char* json;
  T value;
};

// Every value starts from `earlier`, which a refusal must leave alone.
template <typename T>
void ExpectConversions(const T& earlier, const std::vector<Accepted<T>>& accepted,
                       const std::vector<const char*>& refused,
                       Json::ValueType type = Json::nullValue) {
  for (const Accepted<T>& row : accepted) {
    SCOPED_TRACE(row.json);
    APIParameter<T> parameter;
    parameter.SetDefault(earlier);
    EXPECT_TRUE(parameter.ParseValue(FromText(row.json), type));
    EXPECT_EQ(row.value, parameter.Get());
  }
  for (const char* json : refused) {
    SCOPED_TRACE(json);
    APIParameter<T> parameter;
    parameter.SetDefault(earlier);
    EXPECT_FALSE(parameter.ParseValue(FromText(json), type));
    EXPECT_EQ(earlier, parameter.Get());
  }
}

TEST(APIParameter, ConvertsOnlyWhatFitsItsType) {
  ExpectConversions<int>(
      7, {{"-2147483648", std::numeric_limits<int>::min()}, {"2147483647", 2147483647}},
      {"-2147483649", "2147483648", "18446744073709551615", "1.0", "true", "\"5\"", "null", "[]"});
  ExpectConversions<long long>(7,
                               {{"-9223372036854775808", std::numeric_limits<long long>::min()},
                                {"9223372036854775807", std::numeric_limits<long long>::max()}},
                               {"9223372036854775808", "18446744073709551615", "1e3", "false"});
  ExpectConversions<unsigned int>(7, {{"0", 0U}, {"4294967295", 4294967295U}},
                                  {"-1", "4294967296", "18446744073709551615", "0.0", "\"1\""});
  ExpectConversions<unsigned long long>(
      7, {{"0", 0U}, {"18446744073709551615", 18446744073709551615ULL}},
      {"-1", "-9223372036854775808", "18446744073709551616", "true"});
  ExpectConversions<bool>(true, {{"false", false}, {"true", true}},
                          {"0", "1", "\"false\"", "null"});
  ExpectConversions<double>(
      7.5, {{"3", 3.0}, {"-0.5", -0.5}, {"true", 1.0}, {"18446744073709551615", 0x1p64}},
      {"\"3\"", "null", "{}"});
  ExpectConversions<std::string>("earlier",
                                 {{"\"\"", ""}, {"\"a\\u0000b\"", std::string("a\0b", 3)}},
                                 {"5", "true", "null", "[\"a\"]"});
  ExpectConversions<Json::Value>("earlier", {{"{\"a\":1}", FromText("{\"a\":1}")}},
                                 {"null", "[]", "\"{}\"", "1"}, Json::objectValue);
}

// The reader stores no such value, a handler's own JSON may.
TEST(APIParameter, IntRefusesUnsignedStorage) {
  APIParameter<int> parameter;
  EXPECT_FALSE(parameter.ParseValue(Json::Value(5U), Json::intValue));
  APIParameter<long long> wide;
  EXPECT_TRUE(wide.ParseValue(Json::Value(5U), Json::intValue));
  EXPECT_EQ(5, wide.Get());
}

TEST(APIParameter, FlagsTellHowTheValueCameAbout) {
  struct {
    const char* name;
    const char* json;  // null: the parameter is missing
    PARAM_NECESSITY necessity;
    bool set, reset, invalid;
    const char* value_or_fallback;
    bool default_taken;  // what SetDefault returns
    const char* value_after_default;
  } const rows[] = {
      {"missing, optional", nullptr, PARAM_OPTIONAL, false, false, false, "fallback", true,
       "default"},
      {"missing, required", nullptr, PARAM_REQUIRED, false, false, true, "fallback", false, ""},
      {"null", "null", PARAM_REQUIRED, true, true, false, "", true, ""},
      {"wrong type", "5", PARAM_OPTIONAL, true, false, true, "fallback", false, ""},
      {"refused", "\"refused\"", PARAM_OPTIONAL, true, false, true, "fallback", false, "refused"},
      {"accepted", "\"text\"", PARAM_REQUIRED, true, false, false, "text", true, "text"},
  };
  static int validations;
  validations = 0;
  const auto validator = [](const std::string& text) {
    ++validations;
    return text != "refused";
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Json::Value json(Json::objectValue);
    if (row.json != nullptr) {
      json["name"] = FromText(row.json);
    }
    APIParameter<std::string> parameter =
        APIParameterFactoryBasicImpl<std::string>::FromJson(json, "name", row.necessity, validator);
    EXPECT_EQ(row.set, parameter.IsSet());
    EXPECT_EQ(row.reset, parameter.IsReset());
    EXPECT_EQ(row.invalid, parameter.IsInvalid());
    EXPECT_EQ(row.value_or_fallback, parameter.Get("fallback"));
    EXPECT_EQ(row.default_taken, parameter.SetDefault("default"));
    EXPECT_EQ(row.value_after_default, parameter.Get());
    EXPECT_EQ(row.default_taken && !row.set, parameter.IsDefault());
    EXPECT_EQ(row.set || parameter.IsDefault(), parameter.IsSet());
  }
  EXPECT_EQ(2, validations) << "null and values of the wrong type reach no validator";
}

TEST(APIParameter, CopiesAreIndependentAndComparedByValue) {
  APIParameter<Json::Value> original;
  original.CheckValueTypeAndGet(FromText("[1]"), Json::arrayValue, nullptr);
  original.MarkReset();
  APIParameter<Json::Value> copy(original);
  EXPECT_TRUE(copy.IsSet() && copy.IsReset() && !copy.IsInvalid() && !copy.IsDefault());

  const Json::Value& held = copy.Get();
  APIParameter<Json::Value> assigned;
  assigned.SetDefault("other");
  copy = assigned;
  EXPECT_EQ(Json::Value("other"), held) << "assignment keeps references to the value";
  EXPECT_TRUE(copy.IsDefault());
  EXPECT_FALSE(copy.IsReset());
  EXPECT_TRUE(original == FromText("[1]")) << "the source keeps its value";

  copy.MarkInvalid();
  EXPECT_TRUE(copy == assigned) << "flags play no part";
  EXPECT_TRUE(copy != original);
  EXPECT_TRUE(copy != Json::Value("else"));
}

TEST(APIParameterFactory, LooksOnlyIntoObjects) {
  const struct {
    const char* container;
    bool invalid_when_optional;
    bool invalid_when_required;
  } rows[] = {{"null", false, true}, {"{}", false, true},      {"[]", true, true},
              {"[1]", true, true},   {"\"name\"", true, true}, {"{\"name\":{}}", false, false}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.container);
    const Json::Value json = FromText(row.container);
    const auto optional = APIParameterFactory::ObjectFromJson(json, "name", PARAM_OPTIONAL);
    const auto required = APIParameterFactory::ObjectFromJson(json, "name", PARAM_REQUIRED);
    EXPECT_EQ(row.invalid_when_optional, optional.IsInvalid());
    EXPECT_EQ(row.invalid_when_required, required.IsInvalid());
  }
  const Json::Value json = FromText("{\"name\":{}}");
  EXPECT_TRUE(APIParameterFactory::ArrayFromJson(json, "name", PARAM_OPTIONAL).IsInvalid());
}

}  // namespace
}  // namespace ORBO
