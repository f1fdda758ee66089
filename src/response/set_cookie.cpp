#include "response/set_cookie.h"

#include <algorithm>
#include <ctime>
#include <limits>

#include "platform/webapi_util.h"
#include "util/utc_text.h"

namespace ORBO {
namespace {

constexpr char kLongPast[] = "Thu, 01-Jan-1970 00:00:01 GMT";
constexpr char kDateFormat[] = "%a, %d-%b-%Y %H:%M:%S GMT";
constexpr std::int64_t kSecondsPerMinute = 60;

bool IsCookieNameCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         c == '-';
}

// `now` plus `minutes`, or the nearest time there is where the sum does not fit.
std::time_t ExpiryTime(std::int64_t now, long minutes) {
  std::int64_t seconds;
  std::int64_t sum;
  if (__builtin_mul_overflow(std::int64_t{minutes}, kSecondsPerMinute, &seconds) ||
      __builtin_add_overflow(now, seconds, &sum) || sum > std::numeric_limits<std::time_t>::max()) {
    return std::numeric_limits<std::time_t>::max();
  }
  return static_cast<std::time_t>(
      std::max<std::int64_t>(sum, std::numeric_limits<std::time_t>::min()));
}

const char* SameSiteAttribute(APICookie::SameSite same_site) {
  switch (same_site) {
    case APICookie::SameSite::kStrict:
      return "; samesite=Strict";
    case APICookie::SameSite::kLax:
      return "; samesite=Lax";
    case APICookie::SameSite::kNone:
      return "; samesite=None";
    default:
      return "";
  }
}

}  // namespace

bool IsCookieName(const std::string& name) {
  return std::all_of(name.begin(), name.end(), IsCookieNameCharacter);
}

std::string FormatSetCookie(const APICookie& cookie, std::int64_t now) {
  std::string text = cookie.name + "=" + WebAPIUtil::URLEncode(cookie.value);
  text += "; path=" + cookie.path;
  if (cookie.expire_minutes > 0) {
    text += "; expires=" + FormatUtc(ExpiryTime(now, cookie.expire_minutes), kDateFormat);
  } else if (cookie.expire_minutes < 0) {
    text += "; expires=";
    text += kLongPast;
  }
  if (!cookie.domain.empty()) {
    text += "; domain=" + cookie.domain;
  }
  if (cookie.secure) {
    text += "; secure";
  }
  if (cookie.http_only) {
    text += "; httponly";
  }
  text += SameSiteAttribute(cookie.same_site);
  return text;
}

}  // namespace ORBO
