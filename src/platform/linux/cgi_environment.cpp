#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "platform/cgi.h"
#include "platform/linux/cgi_variables.h"
#include "platform/linux/stored_files.h"
#include "platform/string_table.h"

namespace {

using ORBO::CgiVariable;

constexpr char kURLVariable[] = "SCRIPT_URI";

// What may stand in the host part of a URL.  The client sends the host, so it
// must not be able to begin another part, or another line where the URL ends up
// in a header.
bool IsHostCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         std::string_view("-._~:[]%").find(c) != std::string_view::npos;
}

bool IsHost(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), IsHostCharacter);
}

bool IsPath(std::string_view text) {
  return text.substr(0, 1) == "/" && std::none_of(text.begin(), text.end(), [](char c) {
           return static_cast<unsigned char>(c) <= ' ' || c == 0x7f;
         });
}

// The path that the client named, which a rewriting server may have turned into
// another script.
std::string_view Path() {
  std::string_view path = CgiVariable("REQUEST_URI");
  path = path.substr(0, path.find_first_of("?#"));
  return IsPath(path) ? path : CgiVariable("SCRIPT_NAME");
}

void CompleteURL() {
  const std::string_view host = CgiVariable("HTTP_HOST");
  const std::string_view path = Path();
  if (!CgiVariable(kURLVariable).empty() || !IsHost(host) || !IsPath(path)) {
    return;
  }
  std::string url(ORBO::RequestScheme());
  url += "://";
  url += host;
  url += path;
  setenv(kURLVariable, url.c_str(), 1);
}

// The record of the request that this process serves, and the cookie line that its
// client sent.  The entry puts "_sid" into HTTP_COOKIE, so that who looks later
// cannot tell by the environment what came as a cookie.
struct Served {
  const OrboCgi* cgi = nullptr;
  std::string client_cookie_line;
};

Served& ServedRequest() {
  static Served served;
  return served;
}

}  // namespace

void OrboCgiInit(const char* /*name*/, OrboCgi* cgi) {
  OrboCgiFree(cgi);
  // Only a web server sets this one; outside a CGI process the environment is
  // the host program's.
  if (!CgiVariable("GATEWAY_INTERFACE").empty()) {
    CompleteURL();
  }
  if (cgi == nullptr) {
    return;
  }
  cgi->client_cookie_line = CgiVariable("HTTP_COOKIE");
  if (Served& served = ServedRequest(); served.cgi == nullptr) {
    served = {cgi, cgi->client_cookie_line};
  }
}

void OrboCgiInitEx(OrboCgi* cgi, int timeout, bool allow_timeout, const char* /*user_list*/,
                   const char* /*reserved*/) {
  OrboCgiFree(cgi);
  if (cgi == nullptr) {
    return;
  }
  OrboCgiLoadInCookies(cgi);
  const Served& served = ServedRequest();
  cgi->client_cookie_line = served.cgi != nullptr ? served.client_cookie_line : cgi->cookie_line;
  cgi->timeout = timeout;
  cgi->allow_timeout = allow_timeout;
}

void OrboCgiFree(OrboCgi* cgi) {
  if (cgi == nullptr) {
    return;
  }
  QLIBCSzHashFree(cgi->parameters);
  *cgi = OrboCgi();
  if (Served& served = ServedRequest(); served.cgi == cgi) {
    served = {};
    ORBO::StoredFiles::RemoveAll();
  }
}

void OrboCgiLoadInCookies(OrboCgi* cgi) {
  if (cgi != nullptr) {
    cgi->cookie_line = CgiVariable("HTTP_COOKIE");
  }
}
