#include "run.h"

#include <fcntl.h>
#include <json/reader.h>
#include <json/value.h>
#include <signal.h>
#include <spawn.h>
#include <strings.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <thread>

namespace faults {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds kLimit(20);

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

std::vector<std::string> Environment(const Sandbox& sandbox, const Request& request,
                                     const std::vector<std::string>& extra) {
  std::vector<std::string> variables = request.environment;
  const bool is_post = !request.body.empty();
  if (!is_post) {
    variables.emplace_back("REQUEST_METHOD=GET");
  } else {
    variables.push_back("CONTENT_LENGTH=" + std::to_string(request.body.size()));
  }
  variables.insert(
      variables.end(),
      {"PATH=/usr/bin:/bin", "WEBAPI_ROOT=" + sandbox.Path(""), "GATEWAY_INTERFACE=CGI/1.1",
       "SERVER_PROTOCOL=HTTP/1.1", "SERVER_NAME=localhost", "SERVER_PORT=80",
       "REMOTE_ADDR=127.0.0.1", "REQUEST_SCHEME=http", "SCRIPT_NAME=/webapi/entry.cgi",
       "HTTP_HOST=localhost", "SCRIPT_FILENAME=" + sandbox.Program()});
  variables.insert(variables.end(), extra.begin(), extra.end());
  return variables;
}

// Waits for the child and for what it left, which comes to this process as the
// subreaper; false when the time is over.
bool WaitForAll(pid_t child, int& status) {
  const auto deadline = std::chrono::steady_clock::now() + kLimit;
  for (;;) {
    int ended = 0;
    const pid_t pid = waitpid(-1, &ended, WNOHANG);
    if (pid < 0) {
      return true;
    }
    if (pid == child) {
      status = ended;
    } else if (pid == 0) {
      if (std::chrono::steady_clock::now() > deadline) {
        return false;
      }
      std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
  }
}

void KillAll() {
  const std::string list = "/proc/self/task/" + std::to_string(getpid()) + "/children";
  for (;;) {
    std::ifstream children(list);
    pid_t pid = 0;
    if (!(children >> pid)) {
      return;
    }
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
  }
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// The value of a header line of that name; "" if there is none.
std::string Header(const std::string& head, const std::string& name) {
  std::size_t begin = 0;
  while (begin < head.size()) {
    const std::size_t end = head.find("\r\n", begin);
    const std::string line = head.substr(begin, end - begin);
    if (strncasecmp(line.c_str(), (name + ": ").c_str(), name.size() + 2) == 0) {
      return line.substr(name.size() + 2);
    }
    begin = end + 2;
  }
  return "";
}

Verdict JudgeAnswer(const std::string& output, std::string& reason) {
  const std::size_t head_end = output.find("\r\n\r\n");
  if (head_end == std::string::npos) {
    reason = "half a header";
    return Verdict::kBroken;
  }
  const std::string head = output.substr(0, head_end + 2);
  const std::string body = output.substr(head_end + 4);
  const std::string type = Header(head, "Content-type");
  if (type.find("json") != std::string::npos || type.find("html") != std::string::npos) {
    Json::Value value;
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    if (!reader->parse(body.data(), body.data() + body.size(), &value, nullptr) ||
        !value.isObject() || !value["success"].isBool()) {
      reason = "no whole body: " + body.substr(0, 100);
      return Verdict::kBroken;
    }
    return value["success"].asBool() ? Verdict::kSuccess : Verdict::kError;
  }
  const std::string length = Header(head, "Content-Length");
  if (type.empty() || length.empty()) {
    reason = "an answer without type or length";
    return Verdict::kBroken;
  }
  return length == std::to_string(body.size()) ? Verdict::kSuccess : Verdict::kCut;
}

}  // namespace

Outcome Run(const Sandbox& sandbox, const Request& request, const std::vector<std::string>& wrapper,
            const std::vector<std::string>& extra) {
  const std::string input = sandbox.Path("/input");
  const std::string output = sandbox.Path("/output");
  std::ofstream(input, std::ios::binary) << request.body;
  std::vector<std::string> arguments = wrapper;
  std::vector<std::string> environment = Environment(sandbox, request, {});
  if (wrapper.empty()) {
    environment = Environment(sandbox, request, extra);
  } else {
    // The wrapper itself is not to be disturbed.
    for (const std::string& variable : extra) {
      arguments.insert(arguments.end(), {"-E", variable});
    }
  }
  arguments.push_back(sandbox.Program());

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, input.c_str(), O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addchdir_np(&actions,
                                       fs::path(sandbox.Program()).parent_path().string().c_str());
  pid_t child = 0;
  Outcome outcome;
  const int failure = posix_spawnp(&child, arguments[0].c_str(), &actions, nullptr,
                                   Pointers(arguments).data(), Pointers(environment).data());
  posix_spawn_file_actions_destroy(&actions);
  if (failure != 0) {
    throw std::runtime_error("cannot run " + arguments[0]);
  }
  outcome.is_hung = !WaitForAll(child, outcome.status);
  if (outcome.is_hung) {
    KillAll();
  }
  outcome.output = ReadFile(output);
  return outcome;
}

Verdict Judge(const Outcome& outcome, std::string& reason) {
  if (outcome.is_hung) {
    reason = "it hangs";
    return Verdict::kBroken;
  }
  if (WIFSIGNALED(outcome.status)) {
    reason = "ended by signal " + std::to_string(WTERMSIG(outcome.status));
    return Verdict::kBroken;
  }
  return outcome.output.empty() ? Verdict::kNoAnswer : JudgeAnswer(outcome.output, reason);
}

}  // namespace faults
