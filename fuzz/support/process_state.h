#pragma once

#include <string>

namespace ORBO {

// What belongs to the whole process and must be as it was when a request has been served:
// environment (but for the variables that serving a request may set), working directory,
// open descriptors, umask, nice value, name, log identity, streams and handlers of signals.
std::string ProcessState();

}  // namespace ORBO
