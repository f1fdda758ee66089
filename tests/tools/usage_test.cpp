#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "CommandRun.h"

namespace tools {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

using Usage = CommandTest;

TEST_F(Usage, WrongCommandLinesDoNothing) {
  for (const char* arguments : {"",
                                "sessions",
                                "--verbose",
                                "session",
                                "session open",
                                "session open a b",
                                "session open a --unknown",
                                "session open a -x",
                                "session open a --timeout",
                                "session open a --timeout -1",
                                "session open a --timeout 5m",
                                "session open a --address 10.0.0",
                                "session open a/b",
                                "session open 'a\nb'",
                                "session list --json=x",
                                "session list x",
                                "session close",
                                "session close --all --user a",
                                "session close x --all",
                                "token create a",
                                "token create --api A",
                                "token create a --api A:",
                                "token create a --api A:m,",
                                "token create a --api '*'",
                                "token create a --api A --expires 2001-01-01",
                                "token create a --api A --expires 2036-02-30",
                                "token create a --api A --expires 0d",
                                "token create a --api A --expires 99999999999999999999d",
                                "token create a --api A --note 'a\x1b[2J'",
                                "token revoke",
                                "call ORBO.A",
                                "call ORBO.A get value",
                                "call ORBO.A get =value",
                                "call ORBO.A get --version 0",
                                "call ORBO.A get --user a/b",
                                "list ORBO.A ORBO.B",
                                "new",
                                "new Weather",
                                "new ORBO..A",
                                "new ORBO.A.",
                                "new ORBO.5",
                                "new ORBO.a/b",
                                "new A.B.C.D.E.F",
                                "new ORBO.Session",
                                "passwd",
                                "passwd a:b --remove",
                                "passwd a --stdin --remove"}) {
    SCOPED_TRACE(arguments);
    const Result result = Run(arguments);
    EXPECT_EQ(result.exit_code, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, StartsWith("webapi: "));
    EXPECT_THAT(result.errors, HasSubstr(" --help\n"));
    EXPECT_NE(access((root() + "/run").c_str(), F_OK), 0);
    EXPECT_NE(access((root() + "/var").c_str(), F_OK), 0);
  }
}

TEST_F(Usage, HelpIsThereForEveryCommand) {
  for (const char* command : {"", " call", " list", " session", " session open", " session list",
                              " session show", " session close", " token", " token create",
                              " token list", " token revoke", " passwd", " new"}) {
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
