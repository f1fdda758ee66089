#include <webapi/WebEntry.h>

#include "entry/auth_level.h"
#include "request/APIRequestPrivate.h"
#include "util/error_codes.h"

namespace ORBO {

bool WebEntry::NeedPermission(APIRequest* request) {
  return request == nullptr || ToAuthLevel(request->private_->GetData(
                                   "reqLib", "authLevel", Json::Value(1))) != AuthLevel::kNone;
}

bool WebEntry::SkipPermission(APIRequest* request) {
  return request != nullptr && ToAuthLevel(request->private_->GetData(
                                   "reqLib", "authLevel", Json::Value(1))) == AuthLevel::kOptional;
}

bool WebEntry::CheckPermission(APIRequest* /*request*/, APIResponse* response) {
  response->SetError(CheckPermission(false));
  response->SetServerError("unauth");
  return false;
}

int WebEntry::CheckPermission(bool /*allowTimeout*/) {
  // The platform keeps no sessions: nobody can be recognised.
  return kErrorNotAuthenticated;
}

}  // namespace ORBO
