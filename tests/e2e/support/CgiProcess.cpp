#include "support/CgiProcess.h"

#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>

namespace e2e {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kLimit(30);

// A socket stands in for the pipe to the program, so that a program that does
// not read its input cannot kill this one by a signal.
struct Streams {
  int input[2];
  int output[2];
  int errors[2];

  bool Open() {
    return socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, input) == 0 &&
           socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, output) == 0 &&
           socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, errors) == 0;
  }
};

[[noreturn]] void Exec(const Streams& streams, const std::string& directory,
                       const std::vector<std::string>& environment) {
  dup2(streams.input[1], 0);
  dup2(streams.output[1], 1);
  dup2(streams.errors[1], 2);
  std::vector<char*> variables;
  variables.reserve(environment.size() + 1);
  for (const std::string& variable : environment) {
    variables.push_back(const_cast<char*>(variable.c_str()));
  }
  variables.push_back(nullptr);
  const std::string program = directory + "/entry.cgi";
  char* arguments[] = {const_cast<char*>(program.c_str()), nullptr};
  if (chdir(directory.c_str()) == 0) {
    execve(program.c_str(), arguments, variables.data());
  }
  _exit(127);
}

void Append(int descriptor, std::string& text, bool& open) {
  char buffer[65536];
  const ssize_t count = read(descriptor, buffer, sizeof buffer);
  open = count > 0;
  text.append(buffer, open ? static_cast<std::size_t>(count) : 0);
}

// Feeds the program and reads from it until it has closed both streams.  False
// when the time is over.
bool Converse(const Streams& streams, const std::string& body, CgiResult& result) {
  const auto deadline = Clock::now() + kLimit;
  std::size_t sent = 0;
  bool output_open = true;
  bool errors_open = true;
  while (output_open || errors_open) {
    if (sent == body.size()) {
      shutdown(streams.input[0], SHUT_WR);
    }
    pollfd descriptors[] = {{output_open ? streams.output[0] : -1, POLLIN, 0},
                            {errors_open ? streams.errors[0] : -1, POLLIN, 0},
                            {sent < body.size() ? streams.input[0] : -1, POLLOUT, 0}};
    poll(descriptors, 3, 1000);
    if (Clock::now() > deadline) {
      return false;
    }
    if (descriptors[0].revents != 0) {
      Append(streams.output[0], result.output, output_open);
    }
    if (descriptors[1].revents != 0) {
      Append(streams.errors[0], result.errors, errors_open);
    }
    if (descriptors[2].revents != 0) {
      const ssize_t count = send(streams.input[0], body.data() + sent, body.size() - sent,
                                 MSG_NOSIGNAL | MSG_DONTWAIT);
      sent = count > 0 ? sent + static_cast<std::size_t>(count) : body.size();
    }
  }
  return true;
}

}  // namespace

CgiResult RunCgi(const TestRoot& root, const std::vector<std::string>& environment,
                 const std::string& body) {
  CgiResult result;
  const auto start = Clock::now();
  std::vector<std::string> variables = environment;
  variables.push_back("WEBAPI_ROOT=" + root.path());
  Streams streams;
  if (!streams.Open()) {
    return result;
  }
  const pid_t program = fork();
  if (program == 0) {
    Exec(streams, root.WebAPIDirectory(), variables);
  }
  for (int end : {streams.input[1], streams.output[1], streams.errors[1]}) {
    close(end);
  }
  result.timed_out = !Converse(streams, body, result);
  if (result.timed_out) {
    kill(program, SIGKILL);
  }
  int status = 0;
  waitpid(program, &status, 0);
  result.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  result.seconds = std::chrono::duration<double>(Clock::now() - start).count();
  for (int end : {streams.input[0], streams.output[0], streams.errors[0]}) {
    close(end);
  }
  return result;
}

}  // namespace e2e
