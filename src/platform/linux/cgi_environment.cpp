#include <strings.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "platform/cgi.h"

namespace {

constexpr char kURLVariable[] = "SCRIPT_URI";

// The variable's value; empty when it is not set.
std::string_view Environment(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
}

std::string_view Scheme() {
  const std::string_view scheme = Environment("REQUEST_SCHEME");
  if (scheme == "http" || scheme == "https") {
    return scheme;
  }
  const char* const https = std::getenv("HTTPS");
  return https != nullptr && (strcasecmp(https, "on") == 0 || https[0] == '1') ? "https" : "http";
}

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
  std::string_view path = Environment("REQUEST_URI");
  path = path.substr(0, path.find_first_of("?#"));
  return IsPath(path) ? path : Environment("SCRIPT_NAME");
}

void CompleteURL() {
  const std::string_view host = Environment("HTTP_HOST");
  const std::string_view path = Path();
  if (!Environment(kURLVariable).empty() || !IsHost(host) || !IsPath(path)) {
    return;
  }
  std::string url(Scheme());
  url += "://";
  url += host;
  url += path;
  setenv(kURLVariable, url.c_str(), 1);
}

}  // namespace

void OrboCgiInit(const char* /*name*/, OrboCgi* cgi) {
  OrboCgiFree(cgi);
  // Only a web server sets this one; outside a CGI process the environment is
  // the host program's.
  if (!Environment("GATEWAY_INTERFACE").empty()) {
    CompleteURL();
  }
}

void OrboCgiFree(OrboCgi* cgi) {
  if (cgi != nullptr) {
    *cgi = OrboCgi();
  }
}

void OrboCgiLoadInCookies(OrboCgi* cgi) {
  if (cgi != nullptr) {
    cgi->cookie_line = Environment("HTTP_COOKIE");
  }
}
