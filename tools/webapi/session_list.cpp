#include <ctime>
#include <vector>

#include "Arguments.h"
#include "Table.h"
#include "output.h"
#include "session_view.h"
#include "time_text.h"

namespace ORBO::tool {
namespace {

constexpr Option kOptions[] = {kJsonOption, kNoMoreOptions};

constexpr char kDetails[] =
    "\n"
    "Examples:\n"
    "  webapi session list\n"
    "  webapi session list --json\n";

ExitCode PrintTable(const std::vector<ListedSession>& sessions) {
  const std::int64_t now = std::time(nullptr);
  Table table({"HANDLE", "USER", "ADDRESS", "APPLICATION", "AGE", "LAST ACTIVITY", "STATE"});
  for (const ListedSession& listed : sessions) {
    const Session& session = listed.session;
    table.Add({SessionHandle(listed.id), session.user, session.address, session.application,
               AgeText(session.created, now), AgeText(session.last_active, now) + " ago",
               StateText(listed)});
  }
  return Print(table.ToText(HasColours())) ? kDone : kFailed;
}

ExitCode Run(const Arguments& arguments) {
  std::vector<ListedSession> sessions;
  if (!LoadSessions(sessions)) {
    return kFailed;
  }
  if (!arguments.Has("json")) {
    return PrintTable(sessions);
  }
  Json::Value list(Json::arrayValue);
  for (const ListedSession& listed : sessions) {
    list.append(ToJson(listed));
  }
  return PrintJson(list);
}

}  // namespace

const Command kSessionList = {
    "list", "Lists the sessions by their handles", "", 0, 0, kOptions, kDetails, Run, nullptr};

}  // namespace ORBO::tool
