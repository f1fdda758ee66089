#include <charconv>
#include <string>
#include <system_error>

#include "platform/cgi.h"
#include "platform/linux/platform_conf.h"
#include "util/log.h"

namespace {

constexpr char kSource[] = "session_timeout.cpp";
constexpr int kDefaultMinutes = 15;

}  // namespace

int QLIBCConfGetKEPTimeout() {
  const std::string text = ORBO::PlatformSetting("session_timeout");
  if (text.empty()) {
    return kDefaultMinutes;
  }
  int minutes = 0;
  const char* const end = text.data() + text.size();
  const std::from_chars_result result = std::from_chars(text.data(), end, minutes);
  if (result.ec != std::errc() || result.ptr != end || minutes < 0) {
    ORBO::Log(LOG_ERR, "%s:%d session_timeout is no number of minutes", kSource, __LINE__);
    return kDefaultMinutes;
  }
  return minutes;
}
