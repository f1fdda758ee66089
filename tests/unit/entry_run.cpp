#include "unit/entry_run.h"

#include <webapi/WebEntry.h>

#include <cstdlib>
#include <iostream>
#include <sstream>

namespace ORBO {

std::string RunEntry(const std::map<std::string, std::string>& variables) {
  setenv("REQUEST_METHOD", "GET", 1);
  for (const auto& [name, value] : variables) {
    setenv(name.c_str(), value.c_str(), 1);
  }
  std::ostringstream output;
  std::streambuf* const previous = std::cout.rdbuf(output.rdbuf());
  {
    WebEntry entry;
    entry.Run(Json::Value());
  }
  std::cout.rdbuf(previous);
  for (const auto& [name, value] : variables) {
    unsetenv(name.c_str());
  }
  for (const char* name :
       {"REQUEST_METHOD", "HTTP_COOKIE", "orboAccessToken", "ORBO_WEBAPI_USERNAME", "SCRIPT_URI"}) {
    unsetenv(name);
  }
  return output.str();
}

std::string BodyOf(const std::string& output) {
  const std::size_t end = output.find("\r\n\r\n");
  return end == std::string::npos ? "no header block" : output.substr(end + 4);
}

}  // namespace ORBO
