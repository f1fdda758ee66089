#include "session_view.h"

#include <utility>

#include "output.h"
#include "platform/cgi.h"

namespace ORBO::tool {

bool MayReadSessions() { return MayRead(OrboCgiSessionDirectory(), "read the sessions"); }

bool LoadSessions(std::vector<ListedSession>& out) {
  if (!MayReadSessions()) {
    return false;
  }
  out = ListSessions();
  if (!out.empty() && SessionHandle(out.front().id).empty()) {
    Complain("cannot tell the handles of the sessions; the system log has the reason");
    return false;
  }
  return true;
}

bool FindSession(const std::string& name, ListedSession& out) {
  if (IsSessionId(name)) {
    Session session;
    const SessionState state = ReadSession(name, session);
    out = {name, std::move(session), state == SessionState::kTimedOut};
    return state == SessionState::kValid || state == SessionState::kTimedOut;
  }
  for (ListedSession& listed : ListSessions()) {
    if (!name.empty() && SessionHandle(listed.id) == name) {
      out = std::move(listed);
      return true;
    }
  }
  return false;
}

std::string StateText(const ListedSession& listed) {
  return listed.timed_out ? "timed out" : "active";
}

Json::Value ToJson(const ListedSession& listed) {
  const Session& session = listed.session;
  Json::Value object(Json::objectValue);
  object["handle"] = SessionHandle(listed.id);
  object["user"] = session.user;
  object["address"] = session.address;
  object["application"] = session.application;
  object["language"] = session.language;
  object["webapi"] = session.webapi;
  object["skip_address_check"] = session.skip_address_check;
  object["timeout"] = session.timeout;
  object["created"] = Json::Int64{session.created};
  object["last_active"] = Json::Int64{session.last_active};
  object["timed_out"] = listed.timed_out;
  return object;
}

}  // namespace ORBO::tool
