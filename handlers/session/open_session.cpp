#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>

#include <cerrno>
#include <cstring>

#include "login_parameters.h"
#include "platform/linux/cross_site.h"
#include "platform/linux/login_throttle.h"
#include "platform/linux/password_check.h"
#include "platform/linux/platform_conf.h"
#include "platform/linux/session_store.h"
#include "platform/users.h"
#include "session_cookie.h"
#include "session_errors.h"
#include "session_methods.h"
#include "util/log.h"
#include "util/log_text.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "Session.cpp";

// The name of the user is kept from most readers of the log: people type passwords
// into the wrong field.
void LogLogin(int priority, const LoginParameters& login, const std::string& address,
              const char* outcome) {
  Log(LOG_AUTHPRIV | priority, "%s:%d login of %s from %s: %s", kSource, __LINE__,
      LogText(login.user).c_str(), LogText(address).c_str(), outcome);
}

// A login that another site's page makes in the user's browser would let the user
// work in that site's account.
bool IsForbiddenCrossSite() {
  return PlatformSwitch("cross_site_check", true) && IsCrossSiteRequest();
}

bool MayAsk(APIRequest* request, APIResponse* response) {
  if (!IsPost(request, response)) {
    return false;
  }
  if (HasPasswordInURL()) {
    response->SetError(kErrorPasswordInURL);
    return false;
  }
  if (IsForbiddenCrossSite()) {
    response->SetError(kErrorOtherSite);
    return false;
  }
  return true;
}

// Judges the password, within the limits on failures.  False with the error set.
bool Authenticate(const LoginParameters& login, const std::string& address, APIResponse* response) {
  const int wait = SecondsUntilLogin(login.user, address);
  if (wait > 0) {
    LogLogin(LOG_NOTICE, login, address, "refused after too many failures");
    RefuseFor(response, wait);
    return false;
  }
  switch (CheckPassword(login.user, login.password, address)) {
    case PasswordResult::kAccepted:
      NoteLoginSuccess(login.user, address);
      return true;
    case PasswordResult::kRefused:
      LogLogin(LOG_NOTICE, login, address, "failed");
      if (NoteLoginFailure(login.user, address)) {
        LogLogin(LOG_WARNING, login, address, "locked");
      }
      response->SetError(kErrorRefused);
      return false;
    case PasswordResult::kUndecided:
      // Counted: it must not be the way to guess for ever.
      NoteLoginFailure(login.user, address);
      LogLogin(LOG_ERR, login, address, "the password could not be judged");
      response->SetError(kErrorUnavailable);
      return false;
    default:
      NoteLoginAbandoned(login.user, address);
      LogLogin(LOG_ERR, login, address, "no password can be checked");
      response->SetError(kErrorUnavailable);
      return false;
  }
}

// Logging in again ends the session that the browser had until now.
void CloseEarlierSession(APIRequest* request, const std::string& user) {
  const std::string id = request->GetSessionID();
  Session session;
  if (ReadSession(id, session) == SessionState::kValid && session.user == user) {
    RemoveSession(id);
  }
}

bool StartSession(const LoginParameters& login, const std::string& address, std::string& id) {
  Session session;
  session.user = login.user;
  session.address = address;
  session.application = login.application;
  session.language = login.language;
  if (CreateSession(session, id)) {
    return true;
  }
  Log(LOG_ERR, "%s:%d cannot make a session: %s", kSource, __LINE__, std::strerror(errno));
  return false;
}

}  // namespace

void OpenSession(APIRequest* request, APIResponse* response) {
  // That the caller had no session until now is no failure of this call.
  if (response->HasServerError()) {
    response->SetServerError("");
  }
  LoginParameters login;
  if (!MayAsk(request, response) || !ReadLoginParameters(request, response, login)) {
    return;
  }
  const std::string address = request->GetRemoteIP();
  if (!Authenticate(login, address, response)) {
    return;
  }
  // The id is always a new one: an id that the client brought may be known to
  // somebody else.
  std::string id;
  if (!StartSession(login, address, id)) {
    response->SetError(kErrorUnavailable);
    return;
  }
  CloseEarlierSession(request, login.user);
  LogLogin(LOG_INFO, login, address, "accepted");
  SendSessionCookie(request, response, id);
  Json::Value data(Json::objectValue);
  data["sid"] = id;
  data["user"] = login.user;
  data["is_admin"] = QLIBGroupIsAdminGroupMem(login.user.c_str(), 0) == 1;
  response->SetSuccess(data);
}

}  // namespace ORBO
