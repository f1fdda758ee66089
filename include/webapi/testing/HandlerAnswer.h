#pragma once

#include <json/json.h>

#include <string>
#include <utility>
#include <vector>

namespace ORBO {

// What came back from a call of HandlerTest.  An answer that a handler did not give
// itself is no success: one that crashed, ended the process or did not come to an end
// leaves no code, no status and no content, and Fault() tells why.
class HandlerAnswer {
 public:
  // The output of a CGI program (RFC 3875, section 6), and what was wrong with its run,
  // "" for nothing.
  HandlerAnswer(const std::string& output, std::string fault);

  // "" when the call was served to its end, whatever the answer says.
  const std::string& Fault() const { return fault_; }

  // --- The answer as JSON; null where it has no such part, or is none ---

  bool Success() const;
  // The error code; 0 for success, -1 where the answer is not that of an API.
  int Code() const;
  const Json::Value& Data() const&;
  const Json::Value& Errors() const&;
  const Json::Value& Body() const& { return body_; }
  // Of an answer that nobody keeps.
  Json::Value Data() && { return std::as_const(*this).Data(); }
  Json::Value Errors() && { return std::as_const(*this).Errors(); }
  Json::Value Body() && { return std::move(body_); }

  // --- The answer as HTTP ---

  // Where the answer sets none 200, or 302 with a "Location"; 0 where there is no answer.
  int Status() const;
  // The value of the first header of that name, in any case; "" without one.
  std::string Header(const std::string& name) const;
  // The value that the answer gives the cookie, escapes undone; "" for none.
  std::string Cookie(const std::string& name) const;
  // All headers in their order, the names as they were sent.
  const std::vector<std::pair<std::string, std::string>>& Headers() const { return headers_; }
  // What follows the headers.
  const std::string& Content() const& { return content_; }
  std::string Content() && { return std::move(content_); }

  // The content without the line end of JSON answers, or the fault: one text to compare
  // with what is expected, and for the message of a test that fails.
  std::string Text() const;

 private:
  void ReadHeaders(const std::string& head);

  std::string fault_;
  std::vector<std::pair<std::string, std::string>> headers_;
  std::string content_;
  Json::Value body_;
};

}  // namespace ORBO
