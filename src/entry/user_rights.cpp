#include "entry/user_rights.h"

#include <string>

#include <webapi/APIRequest.h>

#include "platform/users.h"
#include "request/user_class.h"
#include "util/json_types.h"

namespace ORBO {

bool IsUserAllowed(APIRequest* request, const char* user_name, const Json::Value& allow_user) {
  return user_name != nullptr && *user_name != '\0' &&
         ContainsUserClass(allow_user, UserClass(user_name, request->IsAdmin()));
}

bool HasRequiredPrivilege(APIRequest* request, const char* user_name) {
  const std::string privilege = JSON::AsString(request->GetAPIInfo("appPriv", Json::Value("")));
  return privilege.empty() ||
         QLIBAppPrivUserHas(user_name, privilege.c_str(), request->GetRemoteIP().c_str()) != 0;
}

}  // namespace ORBO
