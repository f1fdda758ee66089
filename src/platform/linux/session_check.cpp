#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>

#include "platform/cgi.h"
#include "platform/linux/address.h"
#include "platform/linux/cross_site.h"
#include "platform/linux/platform_conf.h"
#include "platform/linux/session_store.h"
#include "platform/webapi_util.h"
#include "util/log.h"

namespace {

using ORBO::Session;
using ORBO::SessionState;

constexpr char kSource[] = "session_check.cpp";
constexpr std::size_t kAddressSize = 65;
constexpr int kOtherAddress = -3;
constexpr int kOtherSite = -5;

// No facts of an earlier check may outlive one that fails.
void ForgetSession(OrboCgi& cgi) {
  cgi.session_file.clear();
  cgi.skip_check_ip = 0;
  cgi.language.clear();
  cgi.options.clear();
}

// Whether nothing but the client's cookie showed the id.  "_sid" stands at the end
// of the loaded line, and makes it another one than the client's; an id in neither
// was found by a handler's own means.
bool IsByCookieAlone(const OrboCgi& cgi, const std::string& id) {
  const std::string cookie = "id=" + id;
  const std::string_view line = cgi.cookie_line;
  if (cgi.client_cookie_line == line) {
    // Cookies are read with their escapes undone.
    return ORBO::WebAPIUtil::URLDecode(std::string(line), true).find(cookie) != std::string::npos;
  }
  return line.size() < cookie.size() || line.substr(line.size() - cookie.size()) != cookie;
}

bool IsForbiddenCrossSite(const OrboCgi& cgi, const std::string& id) {
  return IsByCookieAlone(cgi, id) && ORBO::IsCrossSiteRequest() &&
         ORBO::PlatformSwitch("cross_site_check", true);
}

// Whether the client has the address that the session was made from.
bool IsFromItsAddress(const Session& session) {
  char text[kAddressSize] = {};
  ORBO::Address client;
  ORBO::Address own;
  return session.address.empty() ||
         (OrboCgiGetRemoteIP(text, sizeof text) != 0 && ORBO::ParseAddress(text, client) &&
          ORBO::ParseAddress(session.address, own) && client == own);
}

void TakeFacts(const std::string& id, const Session& session, bool skip_address, OrboCgi& cgi) {
  cgi.session_file = OrboCgiSessionDirectory() + "/" + id;
  cgi.timeout = session.timeout;
  cgi.skip_check_ip = skip_address ? 1 : 0;
  cgi.language = session.language;
  cgi.options[kCgiOptionWebAPI] = session.webapi;
  cgi.options[kCgiOptionApplication] = session.application;
  cgi.options[kCgiOptionTimeout] = std::to_string(session.timeout);
  if (session.skip_address_check) {
    cgi.options[kCgiOptionSkipCheckIP] = "1";
  }
}

// False if the session is gone meanwhile.
bool Touch(const std::string& id) {
  if (ORBO::TouchSession(id)) {
    return true;
  }
  if (errno == ENOENT) {
    return false;
  }
  ORBO::Log(LOG_ERR, "%s:%d cannot renew a session: %s", kSource, __LINE__, std::strerror(errno));
  return true;
}

}  // namespace

int OrboCgiIsAuthorizedEx(OrboCgi* cgi, const char* session_id, char* user, std::size_t size,
                          const OrboCgiAuthOptions* options, int /*flags*/) {
  if (cgi == nullptr || user == nullptr || size == 0) {
    return static_cast<int>(SessionState::kUnusable);
  }
  ForgetSession(*cgi);
  *user = '\0';
  const std::string id = session_id != nullptr ? session_id : "";
  Session session;
  const SessionState state = ORBO::ReadSession(id, session);
  if (state == SessionState::kUnknown || state == SessionState::kUnusable) {
    return static_cast<int>(state);
  }
  if (session.user.size() >= size) {
    return static_cast<int>(SessionState::kUnusable);
  }
  if (IsForbiddenCrossSite(*cgi, id)) {
    return kOtherSite;
  }
  bool skip_address = session.skip_address_check;
  if (!skip_address && !IsFromItsAddress(session)) {
    skip_address = !ORBO::PlatformSwitch("address_check", true);
    if (!skip_address) {
      return kOtherAddress;
    }
  }
  if (state == SessionState::kTimedOut) {
    return static_cast<int>(state);
  }
  const bool is_activity =
      !cgi->allow_timeout && (options == nullptr || options->allow_timeout == 0);
  if (is_activity && !Touch(id)) {
    return static_cast<int>(SessionState::kUnknown);
  }
  std::memcpy(user, session.user.c_str(), session.user.size() + 1);
  TakeFacts(id, session, skip_address, *cgi);
  return static_cast<int>(SessionState::kValid);
}
