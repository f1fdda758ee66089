#include <webapi/APIAuth.h>

#include <cstdlib>
#include <memory>
#include <string>

#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>

#include "entry/permission_codes.h"
#include "entry/user_rights.h"
#include "platform/cgi.h"
#include "platform/files.h"
#include "util/error_codes.h"

namespace ORBO {
namespace {

// A platform record for one check, released on every path.
class CgiRecord {
 public:
  CgiRecord() = default;
  ~CgiRecord() { OrboCgiFree(&cgi_); }
  CgiRecord(const CgiRecord&) = delete;
  CgiRecord& operator=(const CgiRecord&) = delete;
  OrboCgi* get() { return &cgi_; }

 private:
  OrboCgi cgi_;
};

bool IsValidSession(const char* session_id, bool allow_timeout) {
  CgiRecord cgi;
  OrboCgiInitEx(cgi.get(), QLIBCConfGetKEPTimeout(), allow_timeout, "current.users", "");
  char user[kUserNameSize] = {};
  const OrboCgiAuthOptions options{kAllChecks, 0};
  return PermissionError(
             OrboCgiIsAuthorizedEx(cgi.get(), session_id, user, sizeof user, &options, 0)) == 0;
}

}  // namespace

bool APIAuth::CheckAllowUser(APIRequest* request, const char* user_name) {
  return request != nullptr &&
         IsUserAllowed(request, user_name, request->GetAPIInfo("allowUser", Json::Value()));
}

bool APIAuth::CheckPermission(APIRequest* request, APIResponse* response, const char* session_id,
                              bool allow_timeout) {
  if (session_id == nullptr || !IsValidSession(session_id, allow_timeout)) {
    response->SetError(kErrorNoPrivilege);
    return false;
  }
  if (response->GetError() != 0) {
    return false;
  }
  const std::string user = request->GetLoginUserName();
  if (!CheckAllowUser(request, user.c_str()) || !HasRequiredPrivilege(request, user.c_str())) {
    response->SetError(kErrorNoPrivilege);
    return false;
  }
  return true;
}

bool APIAuth::UpdateTimeout(APIRequest* request) {
  CgiRecord cgi;
  OrboCgiInit("", cgi.get());
  const std::string path = OrboCgiSessionDirectory() + "/" + request->GetSessionID();
  const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path.c_str(), nullptr),
                                                             std::free);
  // No link and no ".." may lead to another file.
  // A session whose time is over must not come to life again.
  return resolved != nullptr && path == resolved.get() &&
         IsValidSession(request->GetSessionID().c_str(), true) &&
         QLIBCFileUTime(path.c_str(), 1, 0) == 0;
}

}  // namespace ORBO
