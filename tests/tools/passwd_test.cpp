#include <gmock/gmock.h>

#include <csignal>

#include "CommandRun.h"
#include "TerminalRun.h"

namespace tools {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class Passwords : public CommandTest {
 protected:
  std::string File() const { return ReadFile("/etc/orbo/passwords"); }
};

TEST_F(Passwords, FirstLineOfTheInputIsSetAndRemoved) {
  EXPECT_EQ(Run({"passwd", "alice", "--stdin"}, "first secret\nmore\n").exit_code, 0);
  const std::string file = File();
  EXPECT_THAT(file, StartsWith("alice:$"));
  EXPECT_THAT(file, Not(HasSubstr("secret")));

  EXPECT_EQ(Run({"passwd", "alice", "--remove"}).exit_code, 0);
  EXPECT_THAT(File(), Not(HasSubstr("alice")));
  EXPECT_EQ(Run({"passwd", "alice", "--remove"}).exit_code, 1);
}

TEST_F(Passwords, UnusableInputSetsNothing) {
  ASSERT_EQ(Run({"passwd", "alice", "--stdin"}, "good\n").exit_code, 0);
  const std::string before = File();
  const struct {
    const char* name;
    std::string input;
  } rows[] = {
      {"no line", ""},
      {"empty line", "\n"},
      {"too long", std::string(512, 'x')},
      {"NUL", std::string("a\0b\n", 4)},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(Run({"passwd", "alice", "--stdin"}, row.input).exit_code, 1);
    EXPECT_EQ(File(), before);
  }
  const Result no_terminal = Run({"passwd", "alice"}, "good\n");
  EXPECT_EQ(no_terminal.exit_code, 1);
  EXPECT_THAT(no_terminal.errors, HasSubstr("--stdin"));
}

TEST_F(Passwords, TerminalAsksTwiceWithoutEcho) {
  TerminalRun run({"passwd", "alice"});
  ASSERT_TRUE(run.WaitFor("password: "));
  EXPECT_FALSE(run.HasEcho());
  run.Type("good one\n");
  ASSERT_TRUE(run.WaitFor("again: "));
  run.Type("good one\n");
  EXPECT_EQ(run.Finish(), 0);
  EXPECT_TRUE(run.HasEcho());
  EXPECT_THAT(run.shown(), Not(HasSubstr("good")));
  EXPECT_THAT(File(), StartsWith("alice:$"));
}

TEST_F(Passwords, DifferentOrInterruptedAnswersSetNothing) {
  TerminalRun different({"passwd", "alice"});
  ASSERT_TRUE(different.WaitFor("password: "));
  different.Type("one\n");
  ASSERT_TRUE(different.WaitFor("again: "));
  different.Type("two\n");
  EXPECT_EQ(different.Finish(), 1);

  TerminalRun interrupted({"passwd", "alice"});
  ASSERT_TRUE(interrupted.WaitFor("password: "));
  interrupted.Type("one\x03");
  EXPECT_EQ(interrupted.Finish(), -SIGINT);
  EXPECT_TRUE(interrupted.HasEcho());
  EXPECT_EQ(File(), "");
}

}  // namespace
}  // namespace tools
