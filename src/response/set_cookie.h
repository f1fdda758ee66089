#pragma once

#include <cstdint>
#include <string>

#include <webapi/APICookie.h>

namespace ORBO {

// Whether `name` holds only ASCII letters, digits, "_" and "-".
bool IsCookieName(const std::string& name);

// The value of the Set-Cookie header for `cookie` (RFC 6265bis, section 4.1).
// `now` is the time on the client's clock in seconds since the epoch.
std::string FormatSetCookie(const APICookie& cookie, std::int64_t now);

}  // namespace ORBO
