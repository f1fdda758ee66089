#include <webapi/WebEntry.h>

#include <cstdlib>
#include <utility>

#include "entry/permission_codes.h"
#include "platform/access_token.h"
#include "platform/cgi.h"
#include "platform/users.h"
#include "request/APIRequestPrivate.h"
#include "util/json_types.h"

namespace ORBO {
namespace {

constexpr int kNoCredentials = -5;
constexpr int kUnknownSession = -2;
constexpr int kTimedOut = -1;
constexpr int kGranted = 1;

// Option `option` as a decimal number; 0 when it is absent or no number.
int NumberOption(const OrboCgi& cgi, int option) {
  const char* const text = OrboCgiGetOption(&cgi, option);
  return text == nullptr ? 0 : JSON::AsInt(Json::Value(text));
}

std::string TextOption(const OrboCgi& cgi, int option) {
  const char* const text = OrboCgiGetOption(&cgi, option);
  return text == nullptr ? "" : text;
}

bool SkipsAddressCheck(const OrboCgi& cgi) {
  const char* const text = OrboCgiGetOption(&cgi, kCgiOptionSkipCheckIP);
  return text == nullptr ? cgi.skip_check_ip == 1 : std::string_view(text) == "1";
}

// The session facts of `user`, from the platform's record of the check that gave
// `result`.
Json::Value SessionFacts(const OrboCgi& cgi, const char* user, int result) {
  const int timeout = NumberOption(cgi, kCgiOptionTimeout);
  Json::Value session(Json::objectValue);
  session["username"] = user;
  session["isAdmin"] = QLIBGroupIsAdminGroupMem(user, 0) == 1;
  session["sessFile"] = cgi.session_file;
  session["isTimeout"] = result == kTimedOut;
  session["timeout"] = timeout != 0 ? timeout : cgi.timeout;
  session["isSkipCheckIP"] = SkipsAddressCheck(cgi);
  session["uiLang"] = OrboCgiGetLang(&cgi);
  session["app"] = TextOption(cgi, kCgiOptionApplication);
  session["webapi"] = TextOption(cgi, kCgiOptionWebAPI);
  session["isAuthorized"] = true;
  return session;
}

}  // namespace

int WebEntry::CheckPermission(bool allow_timeout) {
  Json::Value& slot = perm_info_["permResult"][allow_timeout ? 1 : 0];
  if (!JSON::IsInt(slot)) {
    slot = CheckCredentials(allow_timeout);
  }
  return PermissionError(JSON::AsInt(slot));
}

int WebEntry::CheckCredentials(bool allow_timeout) {
  const std::string session_id = request_->GetSessionID();
  const char* const token = request_->GetOrboAccessTokenID();
  const bool has_token = token != nullptr && *token != '\0';
  if (session_id.empty() && !has_token) {
    return kNoCredentials;
  }
  char user[kUserNameSize] = {};
  int result = kUnknownSession;
  // The platform takes text up to a NUL: another id than the one that handlers see.
  if (!session_id.empty() && session_id.find('\0') == std::string::npos) {
    const OrboCgiAuthOptions options{kAllChecks, allow_timeout ? 1 : 0};
    result = OrboCgiIsAuthorizedEx(cgi_.get(), session_id.c_str(), user, sizeof user, &options, 0);
  }
  if (result < 0) {
    if (!has_token) {
      return result;
    }
    const bool granted =
        OrboAccessTokenGrant(token, request_->private_->api().c_str(),
                             request_->private_->method().c_str(), user, sizeof user) >= 0;
    result = granted ? kGranted : kNoCredentials;
  }
  setenv("ORBO_WEBAPI_USERNAME", user, 1);
  request_->private_->InitSession(SessionFacts(*cgi_, user, result));
  return result;
}

}  // namespace ORBO
