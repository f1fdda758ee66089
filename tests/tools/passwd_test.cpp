#include <gmock/gmock.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>

#include "CommandRun.h"

namespace tools {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

// The command at a terminal of its own.  A shell leads the terminal's session and
// outlives the command: when a leader ends the kernel resets its terminal, and what the
// command left of it could not be seen.
class TerminalRun {
 public:
  explicit TerminalRun(const std::string& arguments) {
    const std::string script =
        "trap : INT; " TOOLS_COMMAND " " + arguments + "; echo exit $?; read rest";
    leader_ = forkpty(&terminal_, nullptr, nullptr, nullptr);
    if (leader_ == 0) {
      execl("/bin/sh", "sh", "-c", script.c_str(), nullptr);
      _exit(127);
    }
  }
  ~TerminalRun() {
    close(terminal_);  // hangs up, which ends whoever still waits
    waitpid(leader_, nullptr, 0);
  }
  TerminalRun(const TerminalRun&) = delete;
  TerminalRun& operator=(const TerminalRun&) = delete;

  // Waits until the terminal has shown `text` behind what was waited for before.
  bool WaitFor(const std::string& text) {
    std::size_t found = std::string::npos;
    while ((found = shown_.find(text, seen_)) == std::string::npos) {
      pollfd entry = {terminal_, POLLIN, 0};
      char buffer[1024];
      const ssize_t count =
          poll(&entry, 1, 20000) == 1 ? read(terminal_, buffer, sizeof buffer) : 0;
      if (count <= 0) {
        return false;
      }
      shown_.append(buffer, static_cast<std::size_t>(count));
    }
    seen_ = found + text.size();
    return true;
  }
  void Type(const std::string& text) const {
    EXPECT_EQ(static_cast<ssize_t>(text.size()), write(terminal_, text.data(), text.size()));
  }
  bool HasEcho() const {
    termios state{};
    return tcgetattr(terminal_, &state) == 0 && (state.c_lflag & ECHO) != 0;
  }
  const std::string& shown() const { return shown_; }

 private:
  int terminal_ = -1;
  pid_t leader_ = -1;
  std::string shown_;
  std::size_t seen_ = 0;
};

class Passwords : public CommandTest {
 protected:
  std::string File() const { return ReadFile("/etc/orbo/passwords"); }
};

TEST_F(Passwords, FirstUsableLineOfTheInputIsSet) {
  EXPECT_EQ(Run("passwd alice --stdin", "first secret\nmore\n").exit_code, 0);
  const std::string file = File();
  EXPECT_THAT(file, StartsWith("alice:$"));
  EXPECT_THAT(file, Not(HasSubstr("secret")));
  for (const std::string& input :
       {std::string(), std::string("\n"), std::string(512, 'x'), std::string("a\0b\n", 4)}) {
    EXPECT_EQ(Run("passwd alice --stdin", input).exit_code, 1);
    EXPECT_EQ(File(), file);
  }
  EXPECT_THAT(Run("passwd alice", "no terminal\n").errors, HasSubstr("--stdin"));
  EXPECT_EQ(Run("passwd alice --remove").exit_code, 0);
  EXPECT_EQ(File(), "");
  EXPECT_EQ(Run("passwd alice --remove").exit_code, 1);
}

TEST_F(Passwords, TerminalAsksTwiceWithoutEcho) {
  const struct {
    const char* second;
    const char* end;
  } rows[] = {{"two\n", "exit 1"}, {"\x03", "exit 130"}, {"one\n", "exit 0"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.end);
    EXPECT_EQ(File(), "");
    TerminalRun run("passwd alice");
    ASSERT_TRUE(run.WaitFor("password: "));
    EXPECT_FALSE(run.HasEcho());
    run.Type("one\n");
    ASSERT_TRUE(run.WaitFor("again: "));
    run.Type(row.second);
    EXPECT_TRUE(run.WaitFor(row.end)) << run.shown();
    EXPECT_TRUE(run.HasEcho());
    EXPECT_THAT(run.shown(), Not(HasSubstr("one")));
  }
  EXPECT_THAT(File(), StartsWith("alice:$"));
}

}  // namespace
}  // namespace tools
