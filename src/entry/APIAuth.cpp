#include <webapi/APIAuth.h>

#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>

#include "request/user_class.h"
#include "util/error_codes.h"
#include "util/json_types.h"

namespace ORBO {

bool APIAuth::CheckAllowUser(APIRequest* request, const char* userName) {
  if (request == nullptr || userName == nullptr) {
    return false;
  }
  const Json::Value classes = request->GetAPIInfo("allowUser", Json::Value());
  return ContainsUserClass(classes, UserClass(userName, request->IsAdmin()));
}

bool APIAuth::CheckPermission(APIRequest* /*request*/, APIResponse* response,
                              const char* /*sessionId*/, bool /*allowTimeout*/) {
  // The platform keeps no sessions: none is valid.
  response->SetError(kErrorNoPrivilege);
  return false;
}

bool APIAuth::UpdateTimeout(APIRequest* /*request*/) { return false; }

}  // namespace ORBO
