#include <charconv>
#include <string>
#include <system_error>

#include "platform/cgi.h"
#include "platform/linux/platform_conf.h"
#include "util/log.h"

namespace {

constexpr char kSource[] = "body_limit.cpp";
constexpr unsigned long long kDefaultSize = 16ULL * 1024 * 1024;

}  // namespace

unsigned long long OrboCgiMaxBodySize() {
  const std::string text = ORBO::PlatformSetting("max_body_size");
  if (text.empty()) {
    return kDefaultSize;
  }
  unsigned long long size = 0;
  const char* const end = text.data() + text.size();
  const std::from_chars_result result = std::from_chars(text.data(), end, size);
  if (result.ec != std::errc() || result.ptr != end) {
    ORBO::Log(LOG_ERR, "%s:%d max_body_size is no number of bytes", kSource, __LINE__);
    return kDefaultSize;
  }
  return size;
}
