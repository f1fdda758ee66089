#include <gmock/gmock.h>
#include <unistd.h>

#include "CommandRun.h"
#include "TerminalRun.h"

namespace tools {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

using Usage = CommandTest;

TEST_F(Usage, WrongCommandLinesDoNothing) {
  const std::vector<std::vector<std::string>> rows = {
      {},
      {"sessions"},
      {"--verbose"},
      {"session"},
      {"session", "open"},
      {"session", "open", "a", "b"},
      {"session", "open", "a", "--unknown"},
      {"session", "open", "a", "-x"},
      {"session", "open", "a", "--timeout"},
      {"session", "open", "a", "--timeout", "-1"},
      {"session", "open", "a", "--timeout", "5m"},
      {"session", "open", "a", "--address", "10.0.0"},
      {"session", "open", "a/b"},
      {"session", "open", "a\nb"},
      {"session", "list", "--json=x"},
      {"session", "list", "x"},
      {"session", "close"},
      {"session", "close", "--all", "--user", "a"},
      {"session", "close", "x", "--all"},
      {"token", "create", "a"},
      {"token", "create", "--api", "A"},
      {"token", "create", "a", "--api", "A:"},
      {"token", "create", "a", "--api", "A:m,"},
      {"token", "create", "a", "--api", "*"},
      {"token", "create", "a", "--api", "A", "--expires", "2001-01-01"},
      {"token", "create", "a", "--api", "A", "--expires", "2036-02-30"},
      {"token", "create", "a", "--api", "A", "--expires", "0d"},
      {"token", "create", "a", "--api", "A", "--expires", "99999999999999999999d"},
      {"token", "create", "a", "--api", "A", "--note", "a\x1b[2J"},
      {"token", "revoke"},
      {"passwd"},
      {"passwd", "a:b", "--remove"},
      {"passwd", "a", "--stdin", "--remove"},
  };
  for (const std::vector<std::string>& arguments : rows) {
    SCOPED_TRACE(testing::PrintToString(arguments));
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
  const std::vector<std::vector<std::string>> rows = {
      {},
      {"session"},
      {"session", "open"},
      {"session", "list"},
      {"session", "show"},
      {"session", "close"},
      {"token"},
      {"token", "create"},
      {"token", "list"},
      {"token", "revoke"},
      {"passwd"},
  };
  for (std::vector<std::string> arguments : rows) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    std::string path = "webapi";
    for (const std::string& word : arguments) {
      path += " " + word;
    }
    arguments.emplace_back("--help");
    const std::string help = Output(arguments);
    EXPECT_THAT(help, StartsWith("usage: " + path));
    EXPECT_THAT(help, HasSubstr("\nExamples:\n  " + path));
  }
}

TEST_F(Usage, OperandsMayLookLikeOptionsBehindTwoDashes) {
  Output({"session", "open", "--", "--all"});
  EXPECT_EQ(Document({"session", "list", "--json"})[0]["user"], "--all");
}

TEST_F(Usage, OthersAreToldWhoMayRunIt) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "needs root, to become somebody else";
  }
  Output({"session", "open", "alice"});
  const Result list = RunAs(65534, {"session", "list"});
  EXPECT_EQ(list.exit_code, 1);
  EXPECT_EQ(list.output, "");
  EXPECT_THAT(list.errors, HasSubstr("run this command as root"));
}

TEST_F(Usage, HeaderStandsOutOnATerminalUnlessRefused) {
  TerminalRun coloured({"token", "list"});
  EXPECT_EQ(coloured.Finish(), 0);
  EXPECT_THAT(coloured.shown(), StartsWith("\x1b["));
  setenv("NO_COLOR", "1", 1);
  TerminalRun plain({"token", "list"});
  unsetenv("NO_COLOR");
  EXPECT_EQ(plain.Finish(), 0);
  EXPECT_THAT(plain.shown(), StartsWith("ID "));
}

}  // namespace
}  // namespace tools
