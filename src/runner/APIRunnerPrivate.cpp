#include "runner/APIRunnerPrivate.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "util/log_text.h"

namespace ORBO {
namespace {

constexpr char kCommandLine[] = "/proc/self/cmdline";
constexpr char kEntrySuffix[] = "_entry.cgi";
constexpr char kEntryName[] = "entry.cgi";
constexpr std::size_t kIdentitySize = 1024;

// The log keeps a pointer to its identity, so the text outlives every runner.
char g_log_identity[kIdentitySize];
char g_task_name[17];
int g_identities = 0;  // runners that live, one within another's call

// Log lines go to the standard error output, too, where the environment has
// WEBAPI_LOG_STDERR.
void OpenLog() {
  closelog();
  const int copy = secure_getenv("WEBAPI_LOG_STDERR") != nullptr ? LOG_PERROR : 0;
  openlog(g_log_identity, LOG_PID | LOG_CONS | copy, 0);
}

// The base name of the first argument, up to a blank or a NUL.
std::string ProgramName() {
  const int descriptor = open(kCommandLine, O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) {
    return program_invocation_short_name;
  }
  char text[4096];
  const ssize_t length = read(descriptor, text, sizeof text);
  close(descriptor);
  std::string_view name(text, length > 0 ? static_cast<std::size_t>(length) : 0);
  name = name.substr(0, name.find_first_of(std::string_view("\0 ", 2)));
  return std::string(name.substr(name.rfind('/') + 1));
}

}  // namespace

APIRunnerPrivate::APIRunnerPrivate(APIRunner* owner)
    : owner_(owner),
      proc_name_(ProgramName()),
      orig_proc_name_(proc_name_),
      outer_identity_(g_identities > 0 ? g_log_identity : ""),
      outer_task_name_(g_task_name) {
  ++g_identities;
}

APIRunnerPrivate::~APIRunnerPrivate() { --g_identities; }

void APIRunnerPrivate::SetArgs(int argc, char** argv) {
  if (argc <= 0 || argv == nullptr || argv[0] == nullptr) {
    return;
  }
  if (orig_proc_name_.find(kEntrySuffix) != std::string::npos) {
    proc_name_ = kEntryName;
  }
  argv0_ = argv[0];
  argv0_length_ = std::strlen(argv0_);
  std::memset(argv0_, 0, argv0_length_);
}

void APIRunnerPrivate::SetArgv0(const std::string& name) {
  if (argv0_ == nullptr || argv0_length_ == 0) {
    return;
  }
  std::memset(argv0_, 0, argv0_length_);
  std::memcpy(argv0_, name.data(), std::min(name.size(), argv0_length_ - 1));
}

bool APIRunnerPrivate::ShowCall(const std::string& api, int version, const std::string& method) {
  const std::string call = LogText(api, kIdentitySize) + "[" + std::to_string(version) + "]." +
                           LogText(method, kIdentitySize);
  std::snprintf(g_log_identity, sizeof g_log_identity, "%s_%s", proc_name_.c_str(), call.c_str());
  OpenLog();
  SetArgv0(g_log_identity);
  std::snprintf(g_task_name, sizeof g_task_name, "%s", call.c_str());
  return prctl(PR_SET_NAME, g_task_name) == 0;
}

void APIRunnerPrivate::ShowProgram() {
  SetArgv0(orig_proc_name_);
  const bool within_call = !outer_identity_.empty();
  std::snprintf(g_log_identity, sizeof g_log_identity, "%s",
                within_call ? outer_identity_.c_str() : orig_proc_name_.c_str());
  OpenLog();
  std::snprintf(g_task_name, sizeof g_task_name, "%s",
                within_call ? outer_task_name_.c_str() : orig_proc_name_.c_str());
  prctl(PR_SET_NAME, g_task_name);
}

}  // namespace ORBO
