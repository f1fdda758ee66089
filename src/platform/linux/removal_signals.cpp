#include "platform/linux/removal_signals.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <iterator>

namespace ORBO {
namespace {

// Web servers send SIGTERM when the client has hung up; a handler crashes, or writes
// to a server that is gone.
constexpr int kSignals[] = {SIGHUP,  SIGINT,  SIGQUIT, SIGILL,    SIGTRAP, SIGABRT, SIGBUS,
                            SIGFPE,  SIGUSR1, SIGSEGV, SIGUSR2,   SIGPIPE, SIGALRM, SIGTERM,
                            SIGXCPU, SIGXFSZ, SIGPROF, SIGVTALRM, SIGSYS};
constexpr int kFaults[] = {SIGILL, SIGTRAP, SIGABRT, SIGBUS, SIGFPE, SIGSEGV, SIGSYS};
constexpr std::size_t kStackSize = 16384;

struct Taken {
  struct sigaction earlier;
  bool is_taken;
};

std::array<Taken, std::size(kSignals)> g_taken;
void (*g_remove)() = nullptr;
// For a crash by a stack that is full.
alignas(16) char g_stack[kStackSize];

// Whether the signal ends the process.  After a fault it does whatever handler there is;
// after others a handler mostly goes on.
bool IsFatal(int number, const struct sigaction& action) {
  const bool is_fault =
      std::find(std::begin(kFaults), std::end(kFaults), number) != std::end(kFaults);
  return action.sa_handler == SIG_DFL || (is_fault && action.sa_handler != SIG_IGN);
}

void OnSignal(int number) {
  const int error = errno;
  g_remove();
  for (std::size_t i = 0; i < g_taken.size(); ++i) {
    if (kSignals[i] == number) {
      sigaction(number, &g_taken[i].earlier, nullptr);
    }
  }
  // Comes again when this has returned.
  raise(number);
  errno = error;
}

void TakeStack() {
  stack_t stack{};
  if (sigaltstack(nullptr, &stack) == 0 && (stack.ss_flags & SS_DISABLE) != 0) {
    stack.ss_sp = g_stack;
    stack.ss_size = sizeof g_stack;
    stack.ss_flags = 0;
    sigaltstack(&stack, nullptr);
  }
}

void GiveStackBack() {
  stack_t stack{};
  if (sigaltstack(nullptr, &stack) == 0 && stack.ss_sp == g_stack) {
    stack.ss_flags = SS_DISABLE;
    sigaltstack(&stack, nullptr);
  }
}

}  // namespace

void TakeSignals(void (*remove)()) {
  GiveSignalsBack();
  g_remove = remove;
  TakeStack();
  struct sigaction action {};
  action.sa_handler = OnSignal;
  action.sa_flags = SA_RESTART | SA_ONSTACK;
  for (std::size_t i = 0; i < g_taken.size(); ++i) {
    sigaction(kSignals[i], nullptr, &g_taken[i].earlier);
    g_taken[i].is_taken =
        IsFatal(kSignals[i], g_taken[i].earlier) && sigaction(kSignals[i], &action, nullptr) == 0;
  }
}

void GiveSignalsBack() {
  for (std::size_t i = 0; i < g_taken.size(); ++i) {
    struct sigaction action {};
    if (g_taken[i].is_taken && sigaction(kSignals[i], nullptr, &action) == 0 &&
        action.sa_handler == OnSignal) {
      sigaction(kSignals[i], &g_taken[i].earlier, nullptr);
    }
    g_taken[i].is_taken = false;
  }
  GiveStackBack();
}

}  // namespace ORBO
