#include <gtest/gtest.h>
#include <webapi/APIRequest.h>

#include <string>

#include "unit/json.h"
#include "util/json_text.h"

namespace ORBO {
namespace {

APIRequest RequestWith(const std::string& parameters) {
  return APIRequest(FromText("{\"postParam\":" + parameters + "}"));
}

TEST(APIRequestParameters, EachOperationAsksForItsType) {
  APIRequest request = RequestWith(
      R"({"int":-3,"wide":4294967296,"bool":true,"real":1.5,"text":"5","object":{},"array":[1]})");
  constexpr auto kRequired = APIRequest::PARAM_REQUIRED;

  EXPECT_EQ(-3, request.GetAndCheckInt("int", kRequired).Get(0));
  EXPECT_TRUE(request.GetAndCheckInt("wide", kRequired).IsInvalid());
  EXPECT_TRUE(request.GetAndCheckInt("text", kRequired).IsInvalid());
  EXPECT_EQ(4294967296, request.GetAndCheckIntegral<long long>("wide", kRequired).Get(0));
  EXPECT_EQ(4294967296U, request.GetAndCheckIntegral<unsigned long long>("wide", kRequired).Get(0));
  EXPECT_TRUE(request.GetAndCheckIntegral<unsigned int>("wide", kRequired).IsInvalid());
  EXPECT_TRUE(request.GetAndCheckIntegral<unsigned int>("int", kRequired).IsInvalid());
  EXPECT_TRUE(request.GetAndCheckBool("bool", kRequired).Get(false));
  EXPECT_TRUE(request.GetAndCheckBool("int", kRequired).IsInvalid());
  EXPECT_EQ(1.0, request.GetAndCheckReal("bool", kRequired).Get(0.0));
  EXPECT_EQ(1.5, request.GetAndCheckReal("real", kRequired).Get(0.0));
  EXPECT_EQ("5", request.GetAndCheckString("text", kRequired).Get(""));
  EXPECT_FALSE(request.GetAndCheckObject("object", kRequired).IsInvalid());
  EXPECT_TRUE(request.GetAndCheckObject("array", kRequired).IsInvalid());
  EXPECT_FALSE(request.GetAndCheckArray("array", kRequired).IsInvalid());
  EXPECT_TRUE(request.GetAndCheckArray("object", kRequired).IsInvalid());
}

TEST(APIRequestParameters, NecessityDecidesAboutMissingParameters) {
  APIRequest request = RequestWith(R"({"present":1})");
  EXPECT_TRUE(request.GetAndCheckInt("absent", APIRequest::PARAM_REQUIRED).IsInvalid());
  EXPECT_FALSE(request.GetAndCheckInt("absent", APIRequest::PARAM_OPTIONAL).IsInvalid());
  EXPECT_TRUE(request.GetAndCheckUnitArray("absent", APIRequest::PARAM_REQUIRED).IsInvalid());
  const auto optional = request.GetAndCheckUnitArray("absent", APIRequest::PARAM_OPTIONAL);
  EXPECT_FALSE(optional.IsInvalid() || optional.IsSet());
}

TEST(APIRequestParameters, UnitArrayWrapsWhatIsNoArray) {
  APIRequest request = RequestWith(
      R"({"one":"a","list":["a","b"],"empty":[],"object":{"k":1},"zero":0,"null":null})");
  const struct {
    const char* name;
    const char* expected;
  } rows[] = {{"one", R"(["a"])"},
              {"list", R"(["a","b"])"},
              {"empty", "[]"},
              {"object", R"([{"k":1}])"},
              {"zero", "[0]"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const auto parameter = request.GetAndCheckUnitArray(row.name, APIRequest::PARAM_REQUIRED);
    EXPECT_TRUE(parameter.IsSet() && !parameter.IsInvalid());
    EXPECT_EQ(row.expected, JSON::ToText(parameter.Get()));
  }
  EXPECT_TRUE(request.GetAndCheckUnitArray("null", APIRequest::PARAM_REQUIRED).IsReset());

  const auto two = [](const Json::Value& array) { return array.isArray() && array.size() == 2; };
  EXPECT_TRUE(request.GetAndCheckUnitArray("one", APIRequest::PARAM_REQUIRED, two).IsInvalid());
  EXPECT_FALSE(request.GetAndCheckUnitArray("list", APIRequest::PARAM_REQUIRED, two).IsInvalid());
}

}  // namespace
}  // namespace ORBO
