#include "TerminalRun.h"

#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "CommandRun.h"

namespace tools {
namespace {

constexpr int kPatience = 20000;  // milliseconds

// The leader's life: runs the command, tells how it ended, and stays until the test
// has closed its end of `channel`.
[[noreturn]] void Lead(const std::vector<std::string>& arguments, int terminal, int channel) {
  setsid();
  ioctl(terminal, TIOCSCTTY, 0);
  // The terminal's signals are for the command.  A handler is not passed on to it.
  std::signal(SIGINT, [](int) {});
  const int code = WaitForCommand(StartCommand(arguments, terminal, terminal, terminal));
  char rest = 0;
  if (write(channel, &code, sizeof code) == sizeof code) {
    while (read(channel, &rest, 1) > 0) {
    }
  }
  _exit(0);
}

}  // namespace

TerminalRun::TerminalRun(const std::vector<std::string>& arguments)
    : terminal_(-1), leader_channel_(-1) {
  int terminal = -1;
  int other_side = -1;
  int channel[2] = {-1, -1};
  if (openpty(&terminal, &other_side, nullptr, nullptr, nullptr) != 0 ||
      socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, channel) != 0) {
    std::abort();
  }
  leader_ = fork();
  if (leader_ == 0) {
    close(terminal);
    close(channel[0]);
    Lead(arguments, other_side, channel[1]);
  }
  close(other_side);
  close(channel[1]);
  terminal_.Reset(terminal);
  leader_channel_.Reset(channel[0]);
}

TerminalRun::~TerminalRun() {
  // Hangs up, which ends a command that still waits.
  terminal_.Reset(-1);
  leader_channel_.Reset(-1);
  waitpid(leader_, nullptr, 0);
}

bool TerminalRun::ReadMore() {
  pollfd entry = {terminal_.get(), POLLIN, 0};
  char buffer[1024];
  if (poll(&entry, 1, kPatience) != 1) {
    return false;
  }
  const ssize_t count = read(terminal_.get(), buffer, sizeof buffer);
  if (count > 0) {
    shown_.append(buffer, static_cast<std::size_t>(count));
  }
  return count > 0;
}

bool TerminalRun::WaitFor(const std::string& text) {
  std::size_t found = std::string::npos;
  while ((found = shown_.find(text, seen_)) == std::string::npos) {
    if (!ReadMore()) {
      return false;
    }
  }
  seen_ = found + text.size();
  return true;
}

void TerminalRun::Type(const std::string& text) {
  if (write(terminal_.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
    std::abort();
  }
}

bool TerminalRun::HasEcho() const {
  termios state{};
  return tcgetattr(terminal_.get(), &state) == 0 && (state.c_lflag & ECHO) != 0;
}

int TerminalRun::Finish() {
  pollfd ended = {leader_channel_.get(), POLLIN, 0};
  int code = 0;
  if (poll(&ended, 1, kPatience) != 1 ||
      read(leader_channel_.get(), &code, sizeof code) != sizeof code) {
    return -1;
  }
  pollfd entry = {terminal_.get(), POLLIN, 0};
  while (poll(&entry, 1, 0) == 1 && ReadMore()) {
  }
  return code;
}

}  // namespace tools
