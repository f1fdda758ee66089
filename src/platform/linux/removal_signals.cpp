#include "platform/linux/removal_signals.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>

namespace ORBO {
namespace {

// Web servers send SIGTERM when the client has hung up; a handler crashes, or writes
// to a server that is gone.
constexpr int kSignals[] = {SIGHUP,  SIGINT,  SIGQUIT, SIGILL,  SIGABRT, SIGBUS,  SIGFPE,
                            SIGSEGV, SIGPIPE, SIGALRM, SIGTERM, SIGXCPU, SIGXFSZ, SIGSYS};
constexpr std::size_t kStackSize = 16384;

struct Taken {
  struct sigaction earlier;
  bool is_taken;
};

std::array<Taken, std::size(kSignals)> g_taken;
void (*g_remove)() = nullptr;
// For a crash by a stack that is full.
alignas(16) char g_stack[kStackSize];

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
        g_taken[i].earlier.sa_handler != SIG_IGN && sigaction(kSignals[i], &action, nullptr) == 0;
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
