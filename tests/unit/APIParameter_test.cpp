#include <gtest/gtest.h>
#include <webapi/APIParameterFactory.h>
#include <webapi/APIRequest.h>

#include <limits>
#include <string>
#include <vector>

#include "unit/json.h"

namespace ORBO {
namespace {

constexpr auto kRequired = APIRequest::PARAM_REQUIRED;
constexpr auto kOptional = APIRequest::PARAM_OPTIONAL;

// Every value starts from `earlier`, which a refusal must leave alone.
template <typename T>
void ExpectConversions(const T& earlier, const std::vector<std::pair<const char*, T>>& accepted,
                       const std::vector<const char*>& refused,
                       Json::ValueType type = Json::nullValue) {
  const auto expect = [&](const char* json, bool taken, const T& value) {
    SCOPED_TRACE(json);
    APIParameter<T> parameter;
    parameter.SetDefault(earlier);
    EXPECT_EQ(taken, parameter.ParseValue(FromText(json), type));
    EXPECT_EQ(value, parameter.Get());
  };
  for (const auto& [json, value] : accepted) {
    expect(json, true, value);
  }
  for (const char* json : refused) {
    expect(json, false, earlier);
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
  ExpectConversions<bool>(true, {{"false", false}}, {"0", "1", "\"false\"", "null"});
  ExpectConversions<double>(
      7.5, {{"3", 3.0}, {"-0.5", -0.5}, {"true", 1.0}, {"18446744073709551615", 0x1p64}},
      {"\"3\"", "null", "{}"});
  ExpectConversions<std::string>("earlier",
                                 {{"\"\"", ""}, {"\"a\\u0000b\"", std::string("a\0b", 3)}},
                                 {"5", "true", "null", "[\"a\"]"});
  ExpectConversions<Json::Value>("earlier", {{"{\"a\":1}", FromText("{\"a\":1}")}},
                                 {"null", "[]", "\"{}\"", "1"}, Json::objectValue);
  // The reader stores no such value, a handler's own JSON may.
  EXPECT_FALSE(APIParameter<int>().ParseValue(Json::Value(5U), Json::intValue));
  EXPECT_TRUE(APIParameter<long long>().ParseValue(Json::Value(5U), Json::intValue));
}

TEST(APIParameter, FlagsTellHowTheValueCameAbout) {
  const struct {
    const char* json;  // null: the parameter is missing
    PARAM_NECESSITY necessity;
    bool set, reset, invalid;
    const char* value_or_fallback;
    bool default_taken;  // what SetDefault returns
    const char* value_after_default;
  } rows[] = {
      {nullptr, PARAM_OPTIONAL, false, false, false, "fallback", true, "default"},
      {nullptr, PARAM_REQUIRED, false, false, true, "fallback", false, ""},
      {"null", PARAM_REQUIRED, true, true, false, "", true, ""},
      {"5", PARAM_OPTIONAL, true, false, true, "fallback", false, ""},
      {"\"refused\"", PARAM_OPTIONAL, true, false, true, "fallback", false, "refused"},
      {"\"text\"", PARAM_REQUIRED, true, false, false, "text", true, "text"},
  };
  static int validations;
  validations = 0;
  const auto validator = [](const std::string& text) {
    ++validations;
    return text != "refused";
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.json));
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

TEST(APIParameterFactory, LooksOnlyIntoObjects) {
  const auto invalid = [](const char* json, PARAM_NECESSITY necessity) {
    return APIParameterFactory::ObjectFromJson(FromText(json), "name", necessity).IsInvalid();
  };
  for (const char* missing : {"null", "{}"}) {
    EXPECT_FALSE(invalid(missing, PARAM_OPTIONAL)) << missing;
    EXPECT_TRUE(invalid(missing, PARAM_REQUIRED)) << missing;
  }
  for (const char* refused : {"[]", "[1]", "\"name\""}) {
    EXPECT_TRUE(invalid(refused, PARAM_OPTIONAL)) << refused;
  }
}

APIRequest RequestWith(const std::string& parameters) {
  return APIRequest(FromText("{\"postParam\":" + parameters + "}"));
}

TEST(APIRequestParameters, EachOperationAsksForItsType) {
  APIRequest request = RequestWith(R"({"int":-3,"wide":4294967296,"real":1.5,
                                       "object":{},"array":[1],"bool":true})");
  EXPECT_EQ(-3, request.GetAndCheckInt("int", kRequired).Get(0));
  EXPECT_EQ(4294967296U, request.GetAndCheckIntegral<unsigned long long>("wide", kRequired).Get(0));
  EXPECT_TRUE(request.GetAndCheckBool("bool", kRequired).Get(false));
  EXPECT_TRUE(request.GetAndCheckBool("int", kRequired).IsInvalid());
  EXPECT_EQ(1.5, request.GetAndCheckReal("real", kRequired).Get(0.0));
  EXPECT_FALSE(request.GetAndCheckObject("object", kRequired).IsInvalid());
  EXPECT_TRUE(request.GetAndCheckObject("array", kRequired).IsInvalid());
  EXPECT_TRUE(request.GetAndCheckArray("object", kRequired).IsInvalid());
}

TEST(APIRequestParameters, UnitArrayWrapsWhatIsNoArray) {
  APIRequest request =
      RequestWith(R"({"one":"a","list":["a","b"],"empty":[],"object":{"k":1},"null":null})");
  const std::pair<const char*, const char*> rows[] = {
      {"one", R"(["a"])"}, {"list", R"(["a","b"])"}, {"empty", "[]"}, {"object", R"([{"k":1}])"}};
  for (const auto& [name, expected] : rows) {
    const auto parameter = request.GetAndCheckUnitArray(name, kRequired);
    EXPECT_TRUE(parameter.IsSet() && !parameter.IsInvalid());
    EXPECT_EQ(expected, JSON::ToText(parameter.Get()));
  }
  EXPECT_TRUE(request.GetAndCheckUnitArray("null", kRequired).IsReset());
  EXPECT_TRUE(request.GetAndCheckUnitArray("absent", kRequired).IsInvalid());
  EXPECT_FALSE(request.GetAndCheckUnitArray("absent", kOptional).IsInvalid());
  const auto two = [](const Json::Value& array) { return array.size() == 2; };
  EXPECT_TRUE(request.GetAndCheckUnitArray("one", kRequired, two).IsInvalid());
}

}  // namespace
}  // namespace ORBO
