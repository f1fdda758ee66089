#include <webapi/WebEntry.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "entry/auth_level.h"
#include "entry/permission_codes.h"
#include "entry/user_rights.h"
#include "request/APIRequestPrivate.h"
#include "runner/DescriptionCache.h"
#include "util/error_codes.h"
#include "util/json_types.h"

namespace ORBO {
namespace {

// Whether the session holds the facts of a session check and nothing else, so that
// to take it apart and build it anew would not change it.
bool HoldsFactsAlone(const Json::Value& session) {
  static constexpr struct {
    char name[16];
    Json::ValueType type;
  } kFacts[] = {
      {"username", Json::stringValue}, {"isAdmin", Json::booleanValue},
      {"sessFile", Json::stringValue}, {"isTimeout", Json::booleanValue},
      {"timeout", Json::intValue},     {"isSkipCheckIP", Json::booleanValue},
      {"uiLang", Json::stringValue},   {"app", Json::stringValue},
      {"webapi", Json::stringValue},   {"isAuthorized", Json::booleanValue},
  };
  return session.size() == std::size(kFacts) &&
         std::all_of(std::begin(kFacts), std::end(kFacts), [&session](const auto& fact) {
           return JSON::At(session, fact.name).type() == fact.type;
         });
}

// The session as handlers see it, but for the privilege that the check found.
Json::Value CheckedSession(APIRequest* request) {
  Json::Value session(Json::objectValue);
  session["username"] = request->GetLoginUserName();
  session["isAdmin"] = request->IsAdmin();
  session["sessFile"] = request->GetSessionFilePath();
  session["isTimeout"] = request->IsTimeout();
  session["timeout"] = request->GetTimeoutDuration();
  session["isSkipCheckIP"] = request->IsSkipCheckIP();
  session["uiLang"] = request->GetUILanguage();
  session["app"] = request->GetApplication();
  session["webapi"] = request->GetWebAPIPriv();
  session["isAuthorized"] = request->IsAuthorized();
  return session;
}

}  // namespace

bool WebEntry::NeedPermission(APIRequest* request) {
  return request == nullptr || ToAuthLevel(request->private_->GetData(
                                   "reqLib", "authLevel", Json::Value(1))) != AuthLevel::kNone;
}

bool WebEntry::SkipPermission(APIRequest* request) {
  return request != nullptr && ToAuthLevel(request->private_->GetData(
                                   "reqLib", "authLevel", Json::Value(1))) == AuthLevel::kOptional;
}

bool WebEntry::CheckPermission(APIRequest* request, APIResponse* response) {
  const int error = CheckPermission(GetMethodAttr(request, "allowTimeout"));
  if (request != request_.get()) {
    // A call of a compound request is made by the caller of the whole.
    request->InitSession(request_->private_->GetData("session", "", Json::Value()));
  }
  response->SetError(error);
  if (error != 0) {
    if (const char* const word = PermissionWord(error)) {
      response->SetServerError(word);
    }
    return false;
  }
  APIRequestPrivate& call = *request->private_;
  const std::string user = request->GetLoginUserName();
  const Json::Value allowed =
      AllowedUsers(request, call.api(), call.version(), call.method(), *descs_);
  if (!IsUserAllowed(request, user.c_str(), allowed) ||
      !HasRequiredPrivilege(request, user.c_str())) {
    response->SetError(kErrorNoPrivilege);
    return false;
  }
  if (!HoldsFactsAlone(call.GetData("session", "", Json::Value::nullSingleton()))) {
    call.InitSession(CheckedSession(request));
  }
  call.SetData("session", "appPriv",
               JSON::AsString(request->GetAPIInfo("appPriv", Json::Value(""))), false);
  return true;
}

}  // namespace ORBO
