#include "platform/linux/cross_site.h"

#include <strings.h>

#include <string>
#include <string_view>

#include "platform/linux/cgi_variables.h"
#include "platform/linux/trusted_proxies.h"

namespace ORBO {
namespace {

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

// Whether `host` is one host as it stands in a URL, with or without a port.
bool IsHost(std::string_view host) {
  return !host.empty() && host.find_first_of("/?#@\\, \t") == std::string_view::npos;
}

// `host` without the port that the scheme has anyway.
std::string_view WithoutDefaultPort(std::string_view scheme, std::string_view host) {
  const std::string_view port = scheme == "https" ? ":443" : ":80";
  const bool has_port = host.size() > port.size() && host.substr(host.size() - port.size()) == port;
  return has_port ? host.substr(0, host.size() - port.size()) : host;
}

// Whether `origin` is the origin of `host` under `scheme`.
bool IsOrigin(std::string_view origin, std::string_view scheme, std::string_view host) {
  const std::string prefix = std::string(scheme) + "://";
  if (!EqualIgnoringCase(origin.substr(0, prefix.size()), prefix)) {
    return false;
  }
  origin.remove_prefix(prefix.size());
  return IsHost(origin) && IsHost(host) &&
         EqualIgnoringCase(WithoutDefaultPort(scheme, origin), WithoutDefaultPort(scheme, host));
}

// Whether the proxy that the request came through is trusted and took it by https.
bool IsSecureBeforeProxy() {
  Address peer;
  return CgiVariable("HTTP_X_FORWARDED_PROTO") == "https" && PeerAddress(peer) &&
         IsTrustedProxy(peer);
}

bool IsOwnOrigin(std::string_view origin) {
  const std::string_view host = CgiVariable("HTTP_HOST");
  return IsOrigin(origin, RequestScheme(), host) ||
         (IsOrigin(origin, "https", host) && IsSecureBeforeProxy());
}

}  // namespace

bool IsCrossSiteRequest() {
  const std::string_view fetch_site = CgiVariable("HTTP_SEC_FETCH_SITE");
  if (!fetch_site.empty() && fetch_site != "same-origin" && fetch_site != "none") {
    return true;
  }
  const std::string_view origin = CgiVariable("HTTP_ORIGIN");
  return !origin.empty() && !IsOwnOrigin(origin);
}

}  // namespace ORBO
