#pragma once

#include <syslog.h>

namespace ORBO {

// Writes one line to the system log.  Lines begin "%s:%d " with the source's
// name and a line number (that of the cookie check has a form of its own).  Keeps `errno`.  Never
// log a parameter's value, a token, a session id or a password.
void Log(int priority, const char* format, ...) __attribute__((format(printf, 2, 3)));

}  // namespace ORBO
