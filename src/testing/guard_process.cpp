#include "testing/guard_process.h"

#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <string>

namespace ORBO {
namespace {

class Guard {
 public:
  Guard(int socket, const GuardDuties& duties) : socket_(socket), duties_(duties) {
    // The children of a call's process become this one's when it ends.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    // A signal from the terminal is for the test, whose end is noticed.
    setsid();
    signal(SIGCHLD, SIG_DFL);
    sigemptyset(&child_signal_);
    sigaddset(&child_signal_, SIGCHLD);
    sigprocmask(SIG_BLOCK, &child_signal_, nullptr);
    signals_ = signalfd(-1, &child_signal_, SFD_CLOEXEC | SFD_NONBLOCK);
  }

  void Run() {
    pollfd events[] = {{socket_, POLLIN, 0}, {signals_, POLLIN, 0}};
    for (;;) {
      const bool is_woken = poll(events, 2, -1) > 0;
      signalfd_siginfo info;
      while (read(signals_, &info, sizeof info) > 0) {
      }
      Reap();
      GuardMessage message{};
      if (is_woken && events[0].revents != 0 &&
          (!ReceiveMessage(socket_, message) || !Handle(message))) {
        return;
      }
    }
  }

  // Ends all children, and theirs, which become children when their parents end.
  void KillAll() {
    do {
      std::ifstream children("/proc/self/task/" + std::to_string(getpid()) + "/children");
      for (pid_t child = 0; children >> child;) {
        kill(child, SIGKILL);
      }
    } while (ReapOne(0));
  }

 private:
  bool Handle(const GuardMessage& message) {
    switch (message.kind) {
      case GuardMessage::kRun:
        call_ = fork();
        if (call_ == 0) {
          Serve(message.value);
        }
        return call_ > 0;
      case GuardMessage::kKill:
        KillAll();
        return true;
      default:
        return SendMessage(socket_, {GuardMessage::kRunning, HasChildren() ? 1 : 0});
    }
  }

  [[noreturn]] void Serve(int value) {
    // As a web server starts its programs, whatever the test does with these.
    for (const int number : {SIGHUP, SIGINT, SIGTERM, SIGPIPE}) {
      signal(number, SIG_DFL);
    }
    sigset_t no_signals;
    sigemptyset(&no_signals);
    sigprocmask(SIG_SETMASK, &no_signals, nullptr);
    umask(S_IWGRP | S_IWOTH);
    on_exit(EndProcess, nullptr);
    duties_.serve(value);
    SendMessage(socket_, {GuardMessage::kServed, 0});
    exit(0);
  }

  // Runs behind all that the call has left for its exit, and before what the test has:
  // that is not for this process, nor for those that it forks.
  static void EndProcess(int status, void* /*unused*/) {
    std::fflush(nullptr);
    _exit(status);
  }

  static bool HasChildren() {
    siginfo_t info;
    return waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0;
  }

  bool ReapOne(int flags) {
    int status = 0;
    const pid_t child = waitpid(-1, &status, flags);
    if (child == call_ && child > 0) {
      call_ = 0;
      SendMessage(socket_, {GuardMessage::kEnded, status});
    }
    return child > 0;
  }

  void Reap() {
    while (ReapOne(WNOHANG)) {
    }
  }

  int socket_;
  const GuardDuties& duties_;
  sigset_t child_signal_;
  int signals_;
  pid_t call_ = 0;
};

}  // namespace

bool SendMessage(int socket, const GuardMessage& message) {
  return send(socket, &message, sizeof message, MSG_NOSIGNAL) == sizeof message;
}

bool ReceiveMessage(int socket, GuardMessage& message) {
  ssize_t size;
  do {
    size = recv(socket, &message, sizeof message, 0);
  } while (size < 0 && errno == EINTR);
  return size == sizeof message;
}

void RunGuard(int socket, const GuardDuties& duties) noexcept {
  Guard guard(socket, duties);
  guard.Run();
  guard.KillAll();
  duties.clean_up();
  _exit(0);
}

}  // namespace ORBO
