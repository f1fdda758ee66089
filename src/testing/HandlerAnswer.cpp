#include <webapi/testing/HandlerAnswer.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "platform/webapi_util.h"
#include "util/header_line.h"
#include "util/json_text.h"
#include "util/json_types.h"
#include "util/trim.h"

namespace ORBO {
namespace {

constexpr int kNoCode = -1;
constexpr int kOk = 200;
constexpr int kFound = 302;

// Whether `answer` is what an API answers.
bool IsAnswer(const Json::Value& answer) {
  return JSON::IsBool(JSON::At(answer, "success")) &&
         (JSON::AsBool(JSON::At(answer, "success")) ||
          JSON::IsInt(JSON::At(JSON::At(answer, "error"), "code")));
}

}  // namespace

HandlerAnswer::HandlerAnswer(const std::string& output, std::string fault)
    : fault_(std::move(fault)) {
  if (!fault_.empty()) {
    return;
  }
  // A handler that writes the headers itself may end lines as it likes.
  constexpr std::string_view kEnds[] = {"\r\n\r\n", "\n\n"};
  const std::size_t ends[] = {output.find(kEnds[0]), output.find(kEnds[1])};
  const std::size_t first = ends[1] < ends[0] ? 1 : 0;
  if (ends[first] == std::string::npos) {
    fault_ = "the output has no headers: " + output;
    return;
  }
  ReadHeaders(output.substr(0, ends[first]));
  content_ = output.substr(ends[first] + kEnds[first].size());
  Json::Value body;
  if (JSON::Parse(content_, body) && IsAnswer(body)) {
    body_.swap(body);
  }
}

void HandlerAnswer::ReadHeaders(const std::string& head) {
  for (std::size_t begin = 0; begin < head.size();) {
    const std::size_t end = std::min(head.find('\n', begin), head.size());
    std::string_view line = std::string_view(head).substr(begin, end - begin);
    if (!line.empty() && line.back() == '\r') {
      line.remove_suffix(1);
    }
    const std::size_t colon = std::min(line.find(':'), line.size());
    headers_.emplace_back(line.substr(0, colon),
                          Trim(line.substr(std::min(colon + 1, line.size()))));
    begin = end + 1;
  }
}

bool HandlerAnswer::Success() const { return JSON::AsBool(JSON::At(body_, "success")); }

int HandlerAnswer::Code() const {
  return JSON::IsNull(body_) ? kNoCode : JSON::AsInt(JSON::At(JSON::At(body_, "error"), "code"));
}

const Json::Value& HandlerAnswer::Data() const& { return JSON::At(body_, "data"); }

const Json::Value& HandlerAnswer::Errors() const& {
  return JSON::At(JSON::At(body_, "error"), "errors");
}

int HandlerAnswer::Status() const {
  const std::string status = Header("Status");
  if (!fault_.empty() || !status.empty()) {
    return fault_.empty() ? static_cast<int>(std::strtol(status.c_str(), nullptr, 10)) : 0;
  }
  return Header("Location").empty() ? kOk : kFound;
}

std::string HandlerAnswer::Header(const std::string& name) const {
  const auto header = std::find_if(headers_.begin(), headers_.end(), [&name](const auto& row) {
    return IsSameHeader(row.first, name);
  });
  return header == headers_.end() ? "" : header->second;
}

std::string HandlerAnswer::Cookie(const std::string& name) const {
  for (const auto& [header, value] : headers_) {
    if (IsSameHeader(header, "Set-Cookie") && value.rfind(name + "=", 0) == 0) {
      const std::size_t begin = name.size() + 1;
      return WebAPIUtil::URLDecode(value.substr(begin, value.find(';') - begin), true);
    }
  }
  return "";
}

std::string HandlerAnswer::Text() const {
  if (!fault_.empty()) {
    return fault_;
  }
  return JSON::IsNull(body_) ? content_ : JSON::ToText(body_);
}

}  // namespace ORBO
