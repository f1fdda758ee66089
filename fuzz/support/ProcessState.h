#pragma once

#include <map>
#include <string>

namespace ORBO {

// What belongs to the whole process and must be as it was when a request has been served.
struct ProcessState {
  ProcessState();
  bool operator==(const ProcessState& other) const;

  // But for the variables that serving a request may set.
  std::map<std::string, std::string> environment;
  // Working directory, open descriptors, umask, nice value, name, log identity, streams
  // and handlers of signals.
  std::string rest;
};

}  // namespace ORBO
