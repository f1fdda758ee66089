#include <gtest/gtest.h>
#include <webapi/testing/HandlerTest.h>

namespace {

TEST(System, TellsItsFactsInOneRequest) {
  ORBO::HandlerTest test(WEBAPI_HANDLER_FILES);
  Json::Value calls(Json::arrayValue);
  for (const char* method : {"uptime", "load", "memory", "volume", "overview"}) {
    Json::Value call(Json::objectValue);
    call["api"] = "ORBO.Example.System";
    call["version"] = 1;
    call["method"] = method;
    calls.append(call);
  }
  test.User("ben").Param("compound", calls).HttpMethod("POST");
  const ORBO::HandlerAnswer answer = test.Call("ORBO.Entry.Request", 1, "request");
  EXPECT_FALSE(answer.Data()["has_fail"].asBool()) << answer.Text();
  const Json::Value& facts = answer.Data()["result"];
  EXPECT_GT(facts[0]["data"]["seconds"].asInt64(), 0);
  EXPECT_EQ(facts[1]["data"]["averages"].size(), 3U);
  for (const int i : {2, 3}) {
    EXPECT_GT(facts[i]["data"]["total"].asUInt64(), facts[i]["data"]["available"].asUInt64());
  }
  EXPECT_EQ(facts[4]["data"]["user"].asString() + facts[4]["data"]["books"].asString(), "ben4");
}

}  // namespace
