#include "platform/linux/random.h"

#include <sys/random.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "util/log.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "random.cpp";

}  // namespace

std::string RandomBytes(std::size_t count) {
  std::string bytes(count, '\0');
  std::size_t filled = 0;
  while (filled < count) {
    const ssize_t size = getrandom(&bytes[filled], count - filled, 0);
    if (size > 0) {
      filled += static_cast<std::size_t>(size);
    } else if (errno != EINTR) {
      Log(LOG_ERR, "%s:%d no random bytes: %s", kSource, __LINE__, std::strerror(errno));
      std::abort();
    }
  }
  return bytes;
}

bool SecretsEqual(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) {
    return false;
  }
  // Volatile, so that the compiler does not leave the loop early.
  volatile unsigned char difference = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    difference = static_cast<unsigned char>(difference | (a[i] ^ b[i]));
  }
  return difference == 0;
}

}  // namespace ORBO
