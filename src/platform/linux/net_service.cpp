#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/platform_conf.h"
#include "platform/process.h"
#include "util/log.h"

namespace {

using ORBO::Log;

constexpr char kSource[] = "net_service.cpp";

std::vector<std::string> SplitWords(std::string_view text) {
  std::vector<std::string> words;
  for (;;) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    if (text.empty()) {
      return words;
    }
    words.emplace_back(text.substr(0, text.find_first_of(" \t")));
    text.remove_prefix(words.back().size());
  }
}

// How the command starts: as from a service manager and not as from a request.
class StartOptions {
 public:
  StartOptions();
  ~StartOptions();

  StartOptions(const StartOptions&) = delete;
  StartOptions& operator=(const StartOptions&) = delete;

  const posix_spawn_file_actions_t* files() const { return &files_; }
  const posix_spawnattr_t* attributes() const { return &attributes_; }

 private:
  posix_spawn_file_actions_t files_;
  posix_spawnattr_t attributes_;
};

StartOptions::StartOptions() {
  posix_spawn_file_actions_init(&files_);
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
    posix_spawn_file_actions_addopen(&files_, descriptor, "/dev/null", O_RDWR, 0);
  }
  sigset_t signals;
  sigemptyset(&signals);
  posix_spawnattr_init(&attributes_);
  posix_spawnattr_setsigmask(&attributes_, &signals);
  for (const int signal : {SIGHUP, SIGINT, SIGPIPE, SIGTERM, SIGCHLD}) {
    sigaddset(&signals, signal);
  }
  posix_spawnattr_setsigdefault(&attributes_, &signals);
  posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
}

StartOptions::~StartOptions() {
  posix_spawn_file_actions_destroy(&files_);
  posix_spawnattr_destroy(&attributes_);
}

// The process's id; negative, with `errno` set, if the command cannot be started.
pid_t Start(std::vector<std::string>& words) {
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);
  // Most of a CGI process's own environment comes from the client.
  std::string path = "PATH=/usr/sbin:/usr/bin:/sbin:/bin";
  char* const environment[] = {path.data(), nullptr};
  const StartOptions options;
  pid_t child = -1;
  errno = posix_spawn(&child, arguments[0], options.files(), options.attributes(), arguments.data(),
                      environment);
  return errno == 0 ? child : -1;
}

// Whether the process ended with exit code 0.
bool WaitForSuccess(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) {
      return false;
    }
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

int RestartHttpd() {
  std::vector<std::string> command = SplitWords(ORBO::PlatformSetting("httpd_restart"));
  if (command.empty() || command[0].front() != '/') {
    Log(LOG_ERR, "%s:%d httpd_restart names no command", kSource, __LINE__);
    return -1;
  }
  const pid_t child = Start(command);
  if (child < 0) {
    Log(LOG_ERR, "%s:%d cannot start %s: %s", kSource, __LINE__, command[0].c_str(),
        std::strerror(errno));
    return -1;
  }
  if (!WaitForSuccess(child)) {
    Log(LOG_ERR, "%s:%d %s failed", kSource, __LINE__, command[0].c_str());
    return -1;
  }
  return 0;
}

}  // namespace

int QLIBNetService(unsigned int service, int action, int /*flags*/) {
  if (service != kNetServiceHttpd || action != kNetServiceRestart) {
    Log(LOG_ERR, "%s:%d no such service or action: %#x, %d", kSource, __LINE__, service, action);
    return -1;
  }
  return RestartHttpd();
}
