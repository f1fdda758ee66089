#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/linux/byte_range.h"
#include "platform/linux/http_conditions.h"

namespace ORBO {

// The header lines of an answer: those that stand there already and those added.
class AnswerHead {
 public:
  // `written` are the lines that stand there, each with its line end; they must stay
  // valid.
  explicit AnswerHead(std::string_view written) : written_(written) {}

  bool Has(std::string_view name) const { return !Line(name).empty(); }
  // The value of the header among the lines that stand there; empty if it is not.
  std::string_view Value(std::string_view name) const;
  // Adds a header unless it stands there already or its value breaks the line.
  void Add(std::string_view name, std::string_view value);
  // What was added, with the empty line.
  std::string Finish() { return std::move(added_) + "\r\n"; }

 private:
  std::string_view Line(std::string_view name) const;

  std::string_view written_;
  std::string added_;
};

// Headers of every answer with a file, whoever sends the content.
void AddCommonHeaders(const char* mime_type, AnswerHead& head);

// Adds the validators, for which those that stand in `head` are put in.  True when the
// conditions of the request, which the CGI variables hold, end the answer here: 304 or
// 412, without content.
bool AnswerConditions(Validators& validators, AnswerHead& head);

// Adds the headers of an answer with a content of `size` bytes, or with the part that
// the request asks for.  Returns what is to be sent, nothing for HEAD and for a part
// that lies outside.
ByteRange AnswerContent(std::uint64_t size, const Validators& validators, AnswerHead& head);

}  // namespace ORBO
