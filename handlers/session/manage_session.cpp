#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include "platform/linux/session_store.h"
#include "session_cookie.h"
#include "session_errors.h"
#include "session_methods.h"
#include "util/log.h"
#include "util/log_text.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "Session.cpp";

// The caller's own session.  A caller with an access token has none, whatever
// cookie it sends along.
bool FindOwnSession(APIRequest* request, Session& session) {
  return !request->GetSessionFilePath().empty() &&
         ReadSession(request->GetSessionID(), session) == SessionState::kValid &&
         session.user == request->GetLoginUserName();
}

// Whether the client's own cookie shows the session `id`.  Another site can make a
// browser close a session of that site's, and must not log the browser's user out.
bool IsInCookie(APIRequest* request, const std::string& id) {
  return !request->HasParam("_sid") || request->GetCookie("abandoned", "") == id;
}

// What everybody who may see a session sees of it.
Json::Value ToJson(const Session& session) {
  Json::Value data(Json::objectValue);
  data["user"] = session.user;
  data["address"] = session.address;
  data["application"] = session.application;
  data["created"] = static_cast<Json::Int64>(session.created);
  data["last_active"] = static_cast<Json::Int64>(session.last_active);
  return data;
}

// False, with the error set, if the session is still there.
bool Remove(const std::string& id, APIResponse* response) {
  if (RemoveSession(id) || errno == ENOENT) {
    return true;
  }
  Log(LOG_ERR, "%s:%d cannot remove a session: %s", kSource, __LINE__, std::strerror(errno));
  response->SetError(kErrorUnavailable);
  return false;
}

bool IsHandle(const std::string& handle) { return !handle.empty(); }

}  // namespace

void CloseSession(APIRequest* request, APIResponse* response) {
  Session session;
  if (!FindOwnSession(request, session)) {
    response->SetError(kErrorNoSession);
    return;
  }
  const std::string id = request->GetSessionID();
  if (!Remove(id, response)) {
    return;
  }
  Log(LOG_AUTHPRIV | LOG_INFO, "%s:%d logout of %s from %s", kSource, __LINE__,
      LogText(session.user).c_str(), LogText(request->GetRemoteIP()).c_str());
  if (IsInCookie(request, id)) {
    DeleteSessionCookie(request, response);
  }
  response->SetSuccess();
}

void ShowSession(APIRequest* request, APIResponse* response) {
  Session session;
  if (!FindOwnSession(request, session)) {
    response->SetError(kErrorNoSession);
    return;
  }
  Json::Value data = ToJson(session);
  data["is_admin"] = request->IsAdmin();
  data["timeout"] = request->GetTimeoutDuration();
  data["language"] = request->GetUILanguage();
  response->SetSuccess(data);
}

void ListAllSessions(APIRequest* request, APIResponse* response) {
  const std::string own = request->GetSessionID();
  Json::Value data(Json::objectValue);
  Json::Value& sessions = data["sessions"];
  sessions = Json::Value(Json::arrayValue);
  for (const ListedSession& listed : ListSessions()) {
    const std::string handle = SessionHandle(listed.id);
    if (handle.empty()) {
      response->SetError(kErrorUnavailable);
      return;
    }
    Json::Value entry = ToJson(listed.session);
    entry["handle"] = handle;
    entry["is_timed_out"] = listed.timed_out;
    entry["is_own"] = listed.id == own;
    sessions.append(entry);
  }
  response->SetSuccess(data);
}

void KillSession(APIRequest* request, APIResponse* response) {
  if (!IsPost(request, response)) {
    return;
  }
  const auto handle = request->GetAndCheckString("handle", APIRequest::PARAM_REQUIRED, IsHandle);
  if (handle.IsInvalid() || handle.IsReset()) {
    RefuseParameter(response, "handle");
    return;
  }
  const std::vector<ListedSession> sessions = ListSessions();
  const auto found = std::find_if(
      sessions.begin(), sessions.end(),
      [&handle](const ListedSession& listed) { return SessionHandle(listed.id) == handle.Get(); });
  if (found == sessions.end()) {
    response->SetError(kErrorNoSession);
    return;
  }
  if (!Remove(found->id, response)) {
    return;
  }
  Log(LOG_AUTHPRIV | LOG_NOTICE, "%s:%d session of %s ended by %s", kSource, __LINE__,
      LogText(found->session.user).c_str(), LogText(request->GetLoginUserName()).c_str());
  response->SetSuccess();
}

}  // namespace ORBO
