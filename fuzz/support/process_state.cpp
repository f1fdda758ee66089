#include "support/process_state.h"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <set>
#include <sstream>

#include "unit/LogCapture.h"

namespace ORBO {
namespace {

constexpr int kMostSignals = 32;

bool IsSetByRequests(const std::string& name) {
  static const std::set<std::string> kNames = {"HTTP_COOKIE", "orboAccessToken", "USERNAME",
                                               "ORBO_WEBAPI_USERNAME", "SCRIPT_URI"};
  return kNames.count(name) != 0;
}

mode_t Umask() {
  const mode_t mask = umask(0);
  umask(mask);
  return mask;
}

void Describe(const std::ios& stream, std::ostream& out) {
  // The address: a buffer itself would be emptied into `out`.
  out << static_cast<const void*>(stream.rdbuf()) << ' ' << stream.rdstate() << ' '
      << stream.exceptions() << ' ' << stream.flags() << '\n';
}

}  // namespace

std::string ProcessState() {
  std::set<std::string> environment;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string text = *variable;
    if (!IsSetByRequests(text.substr(0, text.find('=')))) {
      environment.insert(text);
    }
  }
  std::ostringstream out;
  for (const std::string& variable : environment) {
    out << variable << '\n';
  }
  char name[17] = {};
  prctl(PR_GET_NAME, name);
  out << std::filesystem::current_path() << ' ' << Umask() << ' ' << getpriority(PRIO_PROCESS, 0)
      << ' ' << name << ' ' << LogIdentity() << '\n';
  for (const auto& open : std::filesystem::directory_iterator("/proc/self/fd")) {
    out << open.path().filename() << ' ';
  }
  for (int i = 1; i < kMostSignals; ++i) {
    struct sigaction action {};
    sigaction(i, nullptr, &action);
    out << reinterpret_cast<const void*>(action.sa_handler) << ' ';
  }
  Describe(std::cin, out);
  Describe(std::cout, out);
  return out.str();
}

}  // namespace ORBO
