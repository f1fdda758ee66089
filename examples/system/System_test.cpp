#include <gtest/gtest.h>
#include <webapi/testing/HandlerTest.h>

namespace {

constexpr char kAPI[] = "ORBO.Example.System";

TEST(System, TellsItsFactsToUsers) {
  ORBO::HandlerTest test(WEBAPI_HANDLER_FILES);
  EXPECT_EQ(test.Call(kAPI, 1, "uptime").Code(), 119);
  test.User("ben");
  EXPECT_GT(test.Call(kAPI, 1, "uptime").Data()["seconds"].asInt64(), 0);
  EXPECT_EQ(test.Call(kAPI, 1, "load").Data()["averages"].size(), 3U);
  for (const char* method : {"memory", "volume"}) {
    const Json::Value facts = test.Call(kAPI, 1, method).Data();
    EXPECT_GT(facts["total"].asUInt64(), facts["available"].asUInt64()) << method;
  }
  EXPECT_EQ(test.Call(kAPI, 1, "overview").Text(),
            R"({"data":{"books":4,"user":"ben"},"success":true})");
}

}  // namespace
