#include "support/cgi_answer.h"

#include "support/target.h"
#include "util/header_line.h"
#include "util/json_types.h"

namespace ORBO {
namespace {

constexpr std::string_view kLineEnd = "\r\n";

}  // namespace

std::vector<std::string> HeaderLines(std::string_view block) {
  std::vector<std::string> lines;
  for (;;) {
    const std::size_t end = block.find(kLineEnd);
    Require(end != std::string_view::npos);
    const std::string_view line = block.substr(0, end);
    block.remove_prefix(end + kLineEnd.size());
    if (line.empty()) {
      Require(block.empty());
      return lines;
    }
    Require(!BreaksHeaderLine(line) && line.find(':') != std::string_view::npos);
    lines.emplace_back(line);
  }
}

CgiAnswer::CgiAnswer(const std::string& output) {
  const std::size_t end = output.find("\r\n\r\n");
  Require(end != std::string::npos);
  lines = HeaderLines(output.substr(0, end + 4));
  body = output.substr(end + 4);
}

std::vector<std::string> CgiAnswer::Values(std::string_view name) const {
  std::vector<std::string> values;
  for (const std::string& line : lines) {
    const std::size_t colon = line.find(": ");
    if (colon != std::string::npos && IsSameHeader(line.substr(0, colon), name)) {
      values.push_back(line.substr(colon + 2));
    }
  }
  return values;
}

int CodeOf(const Json::Value& body) {
  const Json::Value& success = JSON::At(body, "success");
  const int code = JSON::AsInt(JSON::At(JSON::At(body, "error"), "code"));
  Require(body.type() == Json::objectValue && JSON::IsBool(success));
  Require(JSON::AsBool(success) ? !JSON::Has(body, "error")
                                : code != 0 && !JSON::Has(body, "data"));
  return code;
}

}  // namespace ORBO
