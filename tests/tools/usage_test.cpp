#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <utility>
#include <vector>

#include "CommandRun.h"

namespace tools {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

using Usage = CommandTest;

TEST_F(Usage, WrongCommandLinesDoNothing) {
  const std::pair<std::string, std::vector<std::string>> rows[] = {
      {"", {"", "sessions", "--verbose", "session", "token create --api A", "list ORBO.A ORBO.B"}},
      {"session open a", {" b", " --unknown", " --timeout", " --timeout 5m", "/b"}},
      {"session ",
       {"open a --address 10.0.0", "list --json=x", "close --all --user a", "close x --all"}},
      {"token create a", {"", " --api A:m,", " --api '*'"}},
      {"token create a --api A ",
       {"--expires 2001-01-01", "--expires 2036-02-30", "--expires 99999999999999999999d",
        "--note 'a\x1b[2J'"}},
      {"call ORBO.A get ", {"value", "=value", "--version 0"}},
      {"new ", {"Weather", "ORBO..A", "ORBO.5", "A.B.C.D.E.F", "ORBO.Session"}},
      {"check ", {"--seconds 3601"}},
      {"explain ORBO.A get ", {"--address 10.0.0"}},
      {"passwd ", {"a:b --remove", "a --stdin --remove"}},
  };
  for (const auto& [start, ends] : rows) {
    for (const std::string& end : ends) {
      SCOPED_TRACE(start + end);
      const Result result = Run(start + end);
      EXPECT_EQ(result.exit_code, 2);
      EXPECT_EQ(result.output, "");
      EXPECT_THAT(result.errors, StartsWith("webapi: "));
      EXPECT_THAT(result.errors, HasSubstr(" --help\n"));
      EXPECT_NE(access((root() + "/run").c_str(), F_OK), 0);
      EXPECT_NE(access((root() + "/var").c_str(), F_OK), 0);
    }
  }
}

TEST_F(Usage, HelpIsThereForEveryCommand) {
  for (const char* command :
       {"", " call", " list", " check", " explain", " session", " session open", " session list",
        " session show", " session close", " token", " token create", " token list",
        " token revoke", " passwd", " new", " relay", " relay list", " relay test"}) {
    SCOPED_TRACE(command);
    const std::string help = Output(command + std::string(" --help"));
    EXPECT_THAT(help, StartsWith(std::string("usage: webapi") + command));
    EXPECT_THAT(help, HasSubstr(std::string("\nExamples:\n  webapi") + command));
  }
}

TEST_F(Usage, OperandsMayLookLikeOptionsBehindTwoDashes) {
  Output("session open -- --all");
  EXPECT_EQ(Document("session list --json")[0]["user"], "--all");
}

TEST_F(Usage, OthersAreToldWhoMayRunIt) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "needs root, to become somebody else";
  }
  Output("session open alice");
  // The directories of the build may be closed to others.
  std::filesystem::copy_file(TOOLS_COMMAND, root() + "/webapi");
  std::filesystem::copy_file(TOOLS_LIBRARY, root() + "/libwebapi-KEP5.so");
  ASSERT_EQ(chmod(root().c_str(), 0755), 0);
  const Result list = Run("session list", "",
                          "setpriv --reuid=nobody --regid=nogroup --clear-groups "
                          "env LD_LIBRARY_PATH=. ./webapi");
  EXPECT_EQ(list.exit_code, 1);
  EXPECT_EQ(list.output, "");
  EXPECT_THAT(list.errors, HasSubstr("run this command as root"));
}

}  // namespace
}  // namespace tools
