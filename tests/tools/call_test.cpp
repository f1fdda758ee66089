#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "CommandRun.h"

namespace tools {
namespace {

using ::testing::HasSubstr;

class Call : public CommandTest {
 protected:
  // The built-in API needs no handler library.
  void Describe() const {
    const std::string directory = root() + "/usr/orbo/orboman/webapi";
    std::filesystem::create_directories(directory);
    std::ofstream(directory + "/ORBO.Entry.lib") << R"({
        "ORBO.Entry.Request": {"lib": "built-in", "minVersion": 1, "maxVersion": 2,
          "methods": {"1": ["request", {"other": {"allowDemo": true}}], "2": ["request"]}},
        "ORBO.Far": {"lib": "x", "minVersion": 1, "maxVersion": 4294967296, "methods": {}},
        "ORBO.Broken": {"lib": 5}})";
  }
};

TEST_F(Call, PrintsTheAnswerAndEndsByItsSuccess) {
  Describe();
  const std::string call = "call ORBO.Entry.Request request ";
  EXPECT_EQ(
      Output(call + "compound=[]"),
      "{\"data\":{\"has_fail\":false,\"result\":[]},\"httpd_restart\":false,\"success\":true}\n");
  // The highest version is the default, and "[]" quoted is a text.
  const struct {
    std::string arguments;
    const char* code;
  } rows[] = {{call + "compound='\"[]\"'", "110"},
              {call + "--version 3 compound=[]", "104"},
              {"call ORBO.Entry.Request other compound=[]", "103"},
              {"call ORBO.Unknown get 'a&b=c'", "102"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.arguments);
    const Result result = Run(row.arguments);
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(result.output, HasSubstr(std::string("\"code\":") + row.code + "}"));
  }
}

TEST_F(Call, ListsWhatTheLoaderTakes) {
  EXPECT_THAT(Run("list").errors, HasSubstr("cannot enter "));
  Describe();
  EXPECT_EQ(Output("list"),
            "API                 VERSION  METHODS\n"
            "ORBO.Entry.Request  1        request, other\n"
            "ORBO.Entry.Request  2        request\n");
  EXPECT_EQ(Document("list --json ORBO.Entry.Request")[0]["methods"]["1"][1], "other");
  EXPECT_EQ(Document("list --json ORBO.Far")[0]["max_version"].asInt64(), 4294967296);
  EXPECT_EQ(Run("list ORBO.Broken").exit_code, 1);
}

}  // namespace
}  // namespace tools
