#include "entry/user_rights.h"

#include <string>

#include <webapi/APIRequest.h>

#include "platform/users.h"
#include "request/user_class.h"
#include "runner/DescriptionCache.h"
#include "util/json_types.h"

namespace ORBO {

Json::Value AllowedUsers(APIRequest* request, const std::string& api, int version,
                         const std::string& method, DescriptionCache& descriptions) {
  Json::Value classes;
  if (!descriptions.FindMethodAttribute(api, version, method, "allowUser", classes)) {
    classes = request->GetAPIInfo("allowUser", Json::Value());
  }
  return classes;
}

bool IsUserAllowed(APIRequest* request, const char* user_name, const Json::Value& allow_user) {
  return user_name != nullptr && *user_name != '\0' &&
         ContainsUserClass(allow_user, UserClass(user_name, request->IsAdmin()));
}

bool HasRequiredPrivilege(APIRequest* request, const char* user_name) {
  const Json::Value value = request->GetAPIInfo("appPriv", Json::Value(""));
  const std::string privilege = JSON::AsString(value);
  // A list or an object names no privilege that anybody could hold.
  if (!JSON::IsEmpty(value) && privilege.empty() && !JSON::IsString(value)) {
    return false;
  }
  return privilege.empty() ||
         QLIBAppPrivUserHas(user_name, privilege.c_str(), request->GetRemoteIP().c_str()) != 0;
}

}  // namespace ORBO
