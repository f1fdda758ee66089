#include "testing/CallGuard.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <iostream>

namespace ORBO {
namespace {

using Clock = std::chrono::steady_clock;

// For what the guard does at once.
constexpr int kPatience = 10;
constexpr unsigned kPause = 5000;  // microseconds
constexpr char kNoGuard[] = "there is no process that could start the call";

std::string EndOf(int status, bool is_served) {
  const std::string when = is_served ? "" : " before it had answered";
  if (WIFSIGNALED(status)) {
    return "the process of the call was ended by signal " + std::to_string(WTERMSIG(status)) +
           " (" + strsignal(WTERMSIG(status)) + ")" + when;
  }
  return "the process of the call ended with exit status " + std::to_string(WEXITSTATUS(status)) +
         when;
}

}  // namespace

CallGuard::CallGuard(const GuardDuties& duties) : socket_(-1), owner_(getpid()) {
  int sockets[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, sockets) != 0) {
    return;
  }
  socket_.Reset(sockets[0]);
  const Descriptor other(sockets[1]);
  // What is in the buffers must not be written twice.
  std::cout.flush();
  std::fflush(nullptr);
  guard_ = fork();
  if (guard_ == 0) {
    socket_.Reset(-1);
    RunGuard(other.get(), duties);
  }
}

CallGuard::~CallGuard() {
  if (guard_ < 0 || getpid() != owner_) {
    return;
  }
  // To close it would not do: others may have copies.
  shutdown(socket_.get(), SHUT_RDWR);
  while (waitpid(guard_, nullptr, 0) < 0 && errno == EINTR) {
  }
}

bool CallGuard::Await(GuardMessage::Kind kind, int seconds, int& value, bool& is_served) {
  const Clock::time_point end = Clock::now() + std::chrono::seconds(seconds);
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
    pollfd event = {socket_.get(), POLLIN, 0};
    const int ready = left > 0 ? poll(&event, 1, static_cast<int>(left)) : 0;
    GuardMessage message{};
    if (ready == 0 || (ready > 0 && !ReceiveMessage(socket_.get(), message))) {
      return false;
    }
    if (ready > 0 && message.kind == kind) {
      value = message.value;
      return true;
    }
    is_served = is_served || (ready > 0 && message.kind == GuardMessage::kServed);
  }
}

std::string CallGuard::Run(int value, int seconds) {
  int status = 0;
  bool is_served = false;
  if (guard_ < 0 || !SendMessage(socket_.get(), {GuardMessage::kRun, value})) {
    return kNoGuard;
  }
  if (Await(GuardMessage::kEnded, seconds, status, is_served)) {
    return is_served && status == 0 ? "" : EndOf(status, is_served);
  }
  if (!SendMessage(socket_.get(), {GuardMessage::kKill, 0})) {
    return kNoGuard;
  }
  Await(GuardMessage::kEnded, kPatience, status, is_served);
  return "the call did not come to its end within " + std::to_string(seconds) + " s";
}

bool CallGuard::WaitForEnd(int seconds) {
  const Clock::time_point end = Clock::now() + std::chrono::seconds(seconds);
  int running = 1;
  bool is_served = false;
  while (guard_ >= 0 && SendMessage(socket_.get(), {GuardMessage::kCount, 0}) &&
         Await(GuardMessage::kRunning, kPatience, running, is_served)) {
    if (running == 0 || Clock::now() >= end) {
      break;
    }
    usleep(kPause);
  }
  return running == 0;
}

}  // namespace ORBO
