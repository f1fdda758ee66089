#include "platform/linux/cgi_variables.h"

#include <strings.h>

#include <cstdlib>

namespace ORBO {

std::string_view CgiVariable(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
}

std::string_view RequestScheme() {
  const std::string_view scheme = CgiVariable("REQUEST_SCHEME");
  if (scheme == "http" || scheme == "https") {
    return scheme;
  }
  const char* const https = std::getenv("HTTPS");
  return https != nullptr && (strcasecmp(https, "on") == 0 || https[0] == '1') ? "https" : "http";
}

}  // namespace ORBO
