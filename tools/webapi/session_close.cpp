#include <cerrno>
#include <vector>

#include "Arguments.h"
#include "output.h"
#include "session_view.h"

namespace ORBO::tool {
namespace {

constexpr Option kOptions[] = {
    {"user", "NAME", "close all sessions of this user"},
    {"all", nullptr, "close all sessions"},
    kNoMoreOptions,
};

constexpr char kDetails[] =
    "\n"
    "With --user and --all the number of closed sessions is printed.\n"
    "\n"
    "Examples:\n"
    "  webapi session close hQ4v1cU0uB2Xb\n"
    "  webapi session close --user alice\n"
    "  webapi session close --all\n";

// Whether `id` is gone now; one that another process closed is.
bool Close(const std::string& id) {
  errno = 0;
  if (RemoveSession(id) || errno == ENOENT) {
    return true;
  }
  ComplainOfFailure("close a session", errno);
  return false;
}

ExitCode CloseNamed(const std::vector<std::string>& names) {
  ExitCode code = kDone;
  for (const std::string& name : names) {
    // By its id a session can be closed whose file is unusable.
    if (RemoveSession(name)) {
      continue;
    }
    ListedSession listed;
    if (!FindSession(name, listed)) {
      Complain("no such session");
      code = kFailed;
    } else if (!Close(listed.id)) {
      code = kFailed;
    }
  }
  return code;
}

ExitCode CloseMany(const Arguments& arguments) {
  std::vector<ListedSession> sessions;
  if (!LoadSessions(sessions)) {
    return kFailed;
  }
  const std::string user = arguments.Value("user", "");
  ExitCode code = kDone;
  int closed = 0;
  for (const ListedSession& listed : sessions) {
    if (!arguments.Has("all") && listed.session.user != user) {
      continue;
    }
    if (Close(listed.id)) {
      ++closed;
    } else {
      code = kFailed;
    }
  }
  if (closed == 0 && code == kDone && !arguments.Has("all")) {
    Complain("no session of " + user);
    return kFailed;
  }
  return Print(std::to_string(closed) + "\n") ? code : kFailed;
}

ExitCode Run(const Arguments& arguments) {
  const int ways = (arguments.operands().empty() ? 0 : 1) + (arguments.Has("user") ? 1 : 0) +
                   (arguments.Has("all") ? 1 : 0);
  if (ways != 1) {
    return ComplainOfUsage("expected either ID|HANDLE... or --user or --all");
  }
  if (arguments.operands().empty()) {
    return CloseMany(arguments);
  }
  return MayReadSessions() ? CloseNamed(arguments.operands()) : kFailed;
}

}  // namespace

const Command kSessionClose = {
    "close", "Closes sessions", "[ID|HANDLE...]", 0, kAnyNumber, kOptions, kDetails, Run, nullptr};

}  // namespace ORBO::tool
