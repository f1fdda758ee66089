#include "platform/linux/file_answer.h"

#include "platform/linux/cgi_variables.h"
#include "util/header_line.h"
#include "util/trim.h"

namespace ORBO {
namespace {

constexpr char kUnknownType[] = "application/octet-stream";

struct Answer {
  const char* status = "";  // the status line's text where it is not 200
  ByteRange part;
  bool names_range = false;
};

// What a handler says about its content counts instead of what the file says.
void TakeGivenValidators(const AnswerHead& head, Validators& validators) {
  if (head.Has("ETag")) {
    validators.etag = head.Value("ETag");
  }
  ReadHttpDate(head.Value("Last-Modified"), validators.modified);
}

Answer Decide(std::uint64_t size, const Validators& validators) {
  Answer answer;
  answer.part.length = size;
  const Verdict verdict = JudgeConditions(validators);
  if (verdict != Verdict::kProceed) {
    answer.status = verdict == Verdict::kFailed ? "412 Precondition Failed" : "304 Not Modified";
    answer.part = {};
    return answer;
  }
  if (CgiVariable("REQUEST_METHOD") != "GET" || !RangeIsOfThisVersion(validators)) {
    return answer;
  }
  switch (ReadByteRange(CgiVariable("HTTP_RANGE"), size, answer.part)) {
    case RangeKind::kPart:
      answer.status = "206 Partial Content";
      answer.names_range = true;
      break;
    case RangeKind::kUnsatisfiable:
      answer.status = "416 Range Not Satisfiable";
      answer.part = {};
      answer.names_range = true;
      break;
    default:
      break;
  }
  return answer;
}

// "bytes 0-9/100", or "bytes */100" where no part is sent.
std::string ContentRange(const ByteRange& part, std::uint64_t size) {
  const std::string bytes = part.length == 0 ? "*"
                                             : std::to_string(part.first) + "-" +
                                                   std::to_string(part.first + part.length - 1);
  return "bytes " + bytes + "/" + std::to_string(size);
}

}  // namespace

std::string_view AnswerHead::Line(std::string_view name) const {
  std::string_view rest = written_;
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find("\r\n"));
    if (IsSameHeader(Trim(line.substr(0, line.find(':'))), name)) {
      return line;
    }
    rest.remove_prefix(std::min(rest.size(), line.size() + 2));
  }
  return {};
}

std::string_view AnswerHead::Value(std::string_view name) const {
  const std::string_view line = Line(name);
  return line.size() > name.size() ? Trim(line.substr(line.find(':') + 1)) : line;
}

void AnswerHead::Add(std::string_view name, std::string_view value) {
  if (!Has(name)) {
    AppendHeaderLine(name, value, added_);
  }
}

void AddCommonHeaders(const char* mime_type, AnswerHead& head) {
  const std::string_view type = mime_type != nullptr ? mime_type : "";
  head.Add("Content-Type", type.empty() || BreaksHeaderLine(type) ? kUnknownType : type);
  head.Add("X-Content-Type-Options", "nosniff");
  head.Add("Cache-Control", "private, no-cache");
}

ByteRange AnswerWithContent(std::uint64_t size, Validators validators, AnswerHead& head) {
  TakeGivenValidators(head, validators);
  const bool is_whole = head.Has("Status") || head.Has("Content-Length");
  const Answer answer = is_whole ? Answer{"", {0, size}, false} : Decide(size, validators);
  const std::string_view status = answer.status;
  if (!status.empty()) {
    head.Add("Status", status);
  }
  head.Add("ETag", validators.etag);
  head.Add("Last-Modified", HttpDate(validators.modified));
  head.Add("Accept-Ranges", "bytes");
  if (answer.names_range) {
    head.Add("Content-Range", ContentRange(answer.part, size));
  }
  if (status.substr(0, 3) != "304") {
    head.Add("Content-Length", std::to_string(answer.part.length));
  }
  return CgiVariable("REQUEST_METHOD") == "HEAD" ? ByteRange() : answer.part;
}

}  // namespace ORBO
