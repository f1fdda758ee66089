#include "entry/http_header.h"

#include <strings.h>

#include <string_view>

#include "util/header_line.h"
#include "util/json_types.h"
#include "util/log.h"
#include "util/log_text.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "WebEntry.cpp";
constexpr std::string_view kCookieHeader = "Set-Cookie:";
constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kNoCaching =
    "Cache-Control: max-age=0, no-cache, no-store, must-revalidate\r\n"
    "Pragma: no-cache\r\n"
    "Expires: 0\r\n";

bool IsCookieLine(std::string_view text) {
  return text.size() >= kCookieHeader.size() &&
         strncasecmp(text.data(), kCookieHeader.data(), kCookieHeader.size()) == 0;
}

void AppendHeader(const std::string& name, std::string_view value, std::string& out) {
  if (!AppendHeaderLine(name, value, out)) {
    Log(LOG_ERR, "%s:%d header %s holds a line break and is left out", kSource, __LINE__,
        LogText(name).c_str());
  }
}

void AppendCookie(std::string_view cookie, std::string& out) {
  if (BreaksHeaderLine(cookie)) {
    Log(LOG_ERR, "%s:%d a cookie holds a line break and is left out", kSource, __LINE__);
    return;
  }
  if (!IsCookieLine(cookie)) {
    out.append(kCookieHeader).append(" ");
  }
  out.append(cookie).append(kLineEnd);
}

}  // namespace

std::string FormatHeaderBlock(const Json::Value& headers, const Json::Value& cookies) {
  std::string out;
  out.reserve(512);
  for (auto header = headers.begin(); header != headers.end(); ++header) {
    if (JSON::IsString(*header)) {
      AppendHeader(header.name(), JSON::StringView(*header), out);
    }
  }
  for (const Json::Value& cookie : cookies) {
    if (JSON::IsString(cookie)) {
      AppendCookie(JSON::StringView(cookie), out);
    }
  }
  return out.append(kNoCaching).append(kLineEnd);
}

}  // namespace ORBO
