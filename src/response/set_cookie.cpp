#include "response/set_cookie.h"

#include <locale.h>

#include <algorithm>
#include <ctime>
#include <limits>

#include "platform/webapi_util.h"

namespace ORBO {
namespace {

constexpr char kLongPast[] = "Thu, 01-Jan-1970 00:00:01 GMT";
constexpr char kDateFormat[] = "%a, %d-%b-%Y %H:%M:%S GMT";
constexpr std::size_t kDateSize = 1024;
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

std::string FormatDate(std::time_t time) {
  std::tm parts{};
  if (gmtime_r(&time, &parts) == nullptr) {
    return "Fri, 31-Dec-9999 23:59:59 GMT";  // the year does not fit a calendar date
  }
  // Day and month names are English on the wire, whatever locale a handler set.
  const locale_t c_locale = newlocale(LC_ALL_MASK, "C", nullptr);
  char text[kDateSize];
  const std::size_t length = strftime_l(text, sizeof text, kDateFormat, &parts, c_locale);
  freelocale(c_locale);
  return std::string(text, length);
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
    text += "; expires=" + FormatDate(ExpiryTime(now, cookie.expire_minutes));
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
