#include <gtest/gtest.h>
#include <webapi/testing/HandlerTest.h>

namespace {

constexpr char kAPI[] = "ORBO.Example.Checksum";

TEST(Checksum, IsTheResultOfATask) {
  ORBO::HandlerTest test(WEBAPI_HANDLER_FILES);
  test.User("ben");
  EXPECT_EQ(test.Param("path", "../../etc").Call(kAPI, 1, "start").Code(), 1001);
  const Json::Value id =
      test.Param("path", "common-licenses").Call(kAPI, 1, "start").Data()["task_id"];
  EXPECT_TRUE(test.WaitForEnd(20));
  const ORBO::HandlerAnswer status = test.Param("task_id", id).Call(kAPI, 1, "status");
  EXPECT_GT(status.Data()["data"]["bytes"].asInt64(), 1000) << status.Text();
  EXPECT_TRUE(status.Data()["finish"].asBool());
  const ORBO::HandlerAnswer log = test.Param("task_id", id).Call(kAPI, 1, "log");
  EXPECT_NE(log.Data()["text"].asString().find("/GPL-3\n"), std::string::npos) << log.Text();
  EXPECT_EQ(test.User("cleo").Param("task_id", id).Call(kAPI, 1, "status").Code(), 1002);
}

}  // namespace
