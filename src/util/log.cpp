#include "util/log.h"

#include <cerrno>
#include <cstdarg>

namespace ORBO {

void Log(int priority, const char* format, ...) {
  const int saved_errno = errno;
  va_list arguments;
  va_start(arguments, format);
  vsyslog(priority, format, arguments);
  va_end(arguments);
  errno = saved_errno;
}

}  // namespace ORBO
