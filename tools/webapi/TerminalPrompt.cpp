#include "TerminalPrompt.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <string_view>

#include "read_line.h"

namespace ORBO::tool {
namespace {

constexpr std::array<int, 4> kSignals = {SIGINT, SIGTERM, SIGQUIT, SIGHUP};
std::array<struct sigaction, kSignals.size()> former_actions;
sigset_t former_mask;
// The signal that came last; 0 for none.
volatile std::sig_atomic_t caught_signal = 0;

void Catch(int number) { caught_signal = number; }

// The signals are held back but for the wait for input, so that one that comes just
// before the wait ends it too.
void CatchSignals() {
  struct sigaction action = {};
  action.sa_handler = Catch;
  sigemptyset(&action.sa_mask);
  sigset_t held;
  sigemptyset(&held);
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    sigaddset(&held, kSignals[i]);
    sigaction(kSignals[i], &action, &former_actions[i]);
  }
  sigprocmask(SIG_BLOCK, &held, &former_mask);
}

// False when a signal came instead.
bool WaitForInput(int terminal) {
  pollfd input{terminal, POLLIN, 0};
  return ppoll(&input, 1, nullptr, &former_mask) > 0 && caught_signal == 0;
}

void ReleaseSignals() {
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    sigaction(kSignals[i], &former_actions[i], nullptr);
  }
  sigprocmask(SIG_SETMASK, &former_mask, nullptr);
  if (caught_signal != 0) {
    std::raise(caught_signal);
  }
}

void Show(int terminal, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = write(terminal, text.data(), text.size());
    if (count <= 0) {
      return;
    }
    text.remove_prefix(static_cast<std::size_t>(count));
  }
}

}  // namespace

TerminalPrompt::TerminalPrompt() : terminal_(open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY)) {
  if (!terminal_.IsOpen() || tcgetattr(terminal_.get(), &before_) != 0) {
    return;
  }
  CatchSignals();
  termios silent = before_;
  silent.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHONL);
  silent.c_lflag |= ICANON | ISIG;
  // Suspending the process would leave the shell without echo.
  silent.c_cc[VSUSP] = _POSIX_VDISABLE;
  is_silent_ = tcsetattr(terminal_.get(), TCSAFLUSH, &silent) == 0;
  if (!is_silent_) {
    ReleaseSignals();
  }
}

TerminalPrompt::~TerminalPrompt() {
  if (is_silent_) {
    tcsetattr(terminal_.get(), TCSAFLUSH, &before_);
    ReleaseSignals();
  }
}

bool TerminalPrompt::Ask(const std::string& prompt, std::size_t limit, std::string& line) {
  Show(terminal_.get(), prompt);
  const bool read = WaitForInput(terminal_.get()) && ReadLine(terminal_.get(), limit, line);
  Show(terminal_.get(), "\n");
  return read && caught_signal == 0;
}

}  // namespace ORBO::tool
