#pragma once

#include <json/value.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace ORBO {

struct FormFile {
  std::string field;
  std::string name;
  std::string content;
};

using Variables = std::map<std::string, std::string>;

// A call as the author of a test describes it.
struct CallDescription {
  std::string api;
  int version = 1;
  std::string method;
  Json::Value params{Json::objectValue};
  std::vector<FormFile> files;
  std::string http_method;  // "" for the usual one
  Variables cookies;
  Variables variables;  // of CGI; they go before those that follow from the rest
  bool skip_permission = false;
};

// What a web server would hand to the CGI program.
struct CgiRequest {
  Variables variables;
  std::string body;
};

// Parameters are in the URL, with POST in the body, and with files in the fields before
// them.  A value is written as JSON, so that it keeps its type, but for a text in a form
// with files, where every field is one.
CgiRequest ToCgiRequest(const CallDescription& call);

// The CGI variable of a header (RFC 3875, section 4.1.18).
std::string HeaderVariable(const std::string& header);

}  // namespace ORBO
