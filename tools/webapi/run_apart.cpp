#include "run_apart.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <system_error>
#include <thread>

#include "platform/process.h"
#include "util/Descriptor.h"

namespace ORBO::tool {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kPause{5};

[[noreturn]] void Work(int output, const std::function<void(int)>& work) {
  const rlimit no_core{0, 0};
  setrlimit(RLIMIT_CORE, &no_core);
  work(output);
  _exit(0);
}

bool IsWhole(const std::string& output) { return !output.empty() && output.back() == '\n'; }

// Reads until the output is whole, its writers are gone, or the time is over.
std::string ReadOutput(int descriptor, Clock::time_point deadline) {
  std::string output;
  std::array<char, 4096> piece{};
  while (!IsWhole(output)) {
    const auto left = std::chrono::duration_cast<milliseconds>(deadline - Clock::now()).count();
    pollfd readable{descriptor, POLLIN, 0};
    const int ready = left > 0 ? poll(&readable, 1, static_cast<int>(left)) : 0;
    if (ready < 0 && errno == EINTR) {
      continue;
    }
    const ssize_t count = ready > 0 ? read(descriptor, piece.data(), piece.size()) : 0;
    if (count <= 0) {
      break;
    }
    output.append(piece.data(), static_cast<std::size_t>(count));
  }
  return output;
}

// Waits for the child, which is killed once the time is over.
void Await(pid_t child, Clock::time_point deadline, ApartResult& result) {
  pid_t ended = 0;
  while ((ended = waitpid(child, &result.status, WNOHANG)) == 0 && Clock::now() < deadline) {
    std::this_thread::sleep_for(kPause);
  }
  result.in_time = ended != 0;
  if (!result.in_time) {
    kill(child, SIGKILL);
    waitpid(child, &result.status, 0);
  }
}

}  // namespace

ApartResult RunApart(int seconds, const std::function<void(int)>& work) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe");
  }
  const Descriptor reader(ends[0]);
  Descriptor writer(ends[1]);
  const auto deadline = Clock::now() + std::chrono::seconds(seconds);
  const pid_t child = QLIBCProcFork();
  if (child < 0) {
    throw std::system_error(errno, std::generic_category(), "fork");
  }
  if (child == 0) {
    Work(writer.get(), work);
  }
  writer.Reset(-1);
  ApartResult result{ReadOutput(reader.get(), deadline), true, 0};
  Await(child, deadline, result);
  return result;
}

}  // namespace ORBO::tool
