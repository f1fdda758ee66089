#pragma once

#include <string>
#include <vector>

#include "support/TestRoot.h"

namespace e2e {

struct CgiResult {
  std::string output;  // standard output, byte for byte
  std::string errors;  // standard error
  int exit_code = -1;  // -1 when a signal ended it
  int signal = 0;
  bool timed_out = false;  // killed after 30 seconds
  double seconds = 0;
};

// Runs the example program in the web-API directory with exactly the variables
// of `environment` ("NAME=value") and WEBAPI_ROOT, and `body` as its standard
// input, which ends after it.
CgiResult RunCgi(const TestRoot& root, const std::vector<std::string>& environment,
                 const std::string& body = std::string());

}  // namespace e2e
