#include <string>

#include "Arguments.h"
#include "output.h"
#include "printable.h"
#include "session_view.h"
#include "time_text.h"

namespace ORBO::tool {
namespace {

constexpr Option kOptions[] = {kJsonOption, kNoMoreOptions};

constexpr char kDetails[] =
    "\n"
    "Looking at a session is no activity of it.  Other users of the machine can see an\n"
    "id on the command line while the command runs; a handle tells them nothing.\n"
    "\n"
    "Examples:\n"
    "  webapi session show hQ4v1cU0uB2Xb\n";

// Of the names with their colons, and a blank.
constexpr std::size_t kWidth = 15;

std::string Line(const std::string& name, const std::string& value) {
  const std::string start = name + ":";
  return start + std::string(kWidth - start.size(), ' ') +
         (value.empty() ? "-" : Printable(value)) + "\n";
}

std::string ToText(const ListedSession& listed) {
  const Session& session = listed.session;
  return Line("Handle", SessionHandle(listed.id)) + Line("User", session.user) +
         Line("Address", session.address) +
         Line("Address check",
              session.skip_address_check || session.address.empty() ? "no" : "yes") +
         Line("Application", session.application) + Line("Language", session.language) +
         Line("Privileges", session.webapi) + Line("Opened", TimeText(session.created)) +
         Line("Last activity", TimeText(session.last_active)) +
         Line("Time-out",
              session.timeout == 0 ? "never" : std::to_string(session.timeout) + " minutes") +
         Line("State", StateText(listed));
}

ExitCode Run(const Arguments& arguments) {
  ListedSession listed;
  if (!MayReadSessions()) {
    return kFailed;
  }
  if (!FindSession(arguments.operands().front(), listed)) {
    Complain("no such session");
    return kFailed;
  }
  if (arguments.Has("json")) {
    return PrintJson(ToJson(listed));
  }
  return Print(ToText(listed)) ? kDone : kFailed;
}

}  // namespace

const Command kSessionShow = {
    "show", "Shows what is known of a session", "ID|HANDLE", 1, 1, kOptions, kDetails, Run,
    nullptr};

}  // namespace ORBO::tool
