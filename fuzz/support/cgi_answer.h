#pragma once

#include <json/value.h>

#include <string>
#include <string_view>
#include <vector>

namespace ORBO {

// The lines of a header block, which must be one: its first empty line is its end, no
// line holds CR, LF or NUL, and each has a name in front of a colon, or ends the process.
std::vector<std::string> HeaderLines(std::string_view block);

// The whole answer of a CGI program, or ends the process.
struct CgiAnswer {
  explicit CgiAnswer(const std::string& output);

  // The values of the lines with that name, in any case.
  std::vector<std::string> Values(std::string_view name) const;

  std::vector<std::string> lines;
  std::string body;
};

// The error code of a body of the system's own, 0 for a success.
int CodeOf(const Json::Value& body);

}  // namespace ORBO
