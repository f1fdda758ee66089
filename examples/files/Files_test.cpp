#include <gtest/gtest.h>
#include <webapi/testing/HandlerTest.h>

namespace {

constexpr char kAPI[] = "ORBO.Example.Files";

TEST(Files, GiveThoseOfTheDirectoryAndNoOthers) {
  ORBO::HandlerTest test(WEBAPI_HANDLER_FILES);
  test.WriteFile("/srv/files/a.txt", "0123456789").WriteFile("/srv/outside", "");
  EXPECT_EQ(test.Call(kAPI, 1, "list").Text(), R"({"data":{"a.txt":10},"success":true})");
  const ORBO::HandlerAnswer part =
      test.Param("name", "a.txt").Header("Range", "bytes=8-").Call(kAPI, 1, "fetch");
  EXPECT_EQ(part.Status(), 206);
  EXPECT_EQ(part.Header("Content-Disposition"), "attachment; filename=\"a.txt\"");
  EXPECT_EQ(part.Content(), "89");
  for (const auto& [name, code] : {std::pair("../outside", 1001), {"..", 1002}, {"none", 1002}}) {
    EXPECT_EQ(test.Param("name", name).Call(kAPI, 1, "fetch").Code(), code) << name;
  }
}

}  // namespace
