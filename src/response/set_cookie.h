#pragma once

#include <cstdint>
#include <string>

namespace ORBO {

// One cookie to send (RFC 6265, section 4.1).
struct CookieFields {
  const std::string& name;
  const std::string& value;  // sent percent-encoded
  const std::string& path;
  long expire_minutes;  // 0: a session cookie; negative: delete the cookie
  const std::string& domain;
  bool secure;
  bool http_only;
  std::int64_t now;  // seconds since the epoch, on the client's clock
};

// Whether `name` holds only ASCII letters, digits, "_" and "-".
bool IsCookieName(const std::string& name);

// The value of the Set-Cookie header for `cookie`.
std::string FormatSetCookie(const CookieFields& cookie);

}  // namespace ORBO
