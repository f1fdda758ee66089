#include <webapi/WebEntry.h>

#include "entry/auth_level.h"
#include "entry/permission_codes.h"
#include "entry/user_rights.h"
#include "request/APIRequestPrivate.h"
#include "util/error_codes.h"
#include "util/json_types.h"

namespace ORBO {
namespace {

// The session as handlers see it: the facts of the check and the privilege that
// it found.
Json::Value CheckedSession(APIRequest* request) {
  Json::Value session(Json::objectValue);
  session["appPriv"] = JSON::AsString(request->GetAPIInfo("appPriv", Json::Value("")));
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
  const APIRequestPrivate& call = *request->private_;
  const std::string user = request->GetLoginUserName();
  // A method's own list replaces the API's.
  const Json::Value* const own =
      JSON::Find(GetMethod(call.api(), call.version(), call.method()), "allowUser");
  if (!IsUserAllowed(request, user.c_str(),
                     own != nullptr ? *own : request->GetAPIInfo("allowUser", Json::Value())) ||
      !HasRequiredPrivilege(request, user.c_str())) {
    response->SetError(kErrorNoPrivilege);
    return false;
  }
  request->private_->InitSession(CheckedSession(request));
  return true;
}

}  // namespace ORBO
