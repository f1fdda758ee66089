#include "platform/linux/file_answer.h"

#include "platform/linux/cgi_variables.h"
#include "util/header_line.h"
#include "util/trim.h"

namespace ORBO {
namespace {

constexpr char kUnknownType[] = "application/octet-stream";

// What a handler says about its content counts instead of what the file says.
void TakeGivenValidators(const AnswerHead& head, Validators& validators) {
  if (head.Has("ETag")) {
    validators.etag = head.Value("ETag");
  }
  ReadHttpDate(head.Value("Last-Modified"), validators.modified);
}

// A handler that has decided on the status or the length has decided on the content.
bool IsDecided(const AnswerHead& head) { return head.Has("Status") || head.Has("Content-Length"); }

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

bool AnswerConditions(Validators& validators, AnswerHead& head) {
  TakeGivenValidators(head, validators);
  const Verdict verdict = IsDecided(head) ? Verdict::kProceed : JudgeConditions(validators);
  head.Add("ETag", validators.etag);
  head.Add("Last-Modified", HttpDate(validators.modified));
  if (verdict == Verdict::kNotModified) {
    head.Add("Status", "304 Not Modified");
  } else if (verdict == Verdict::kFailed) {
    head.Add("Status", "412 Precondition Failed");
    head.Add("Content-Length", "0");
  }
  return verdict != Verdict::kProceed;
}

ByteRange AnswerContent(std::uint64_t size, const Validators& validators, AnswerHead& head) {
  const std::string_view method = CgiVariable("REQUEST_METHOD");
  ByteRange part = {0, size};
  RangeKind kind = RangeKind::kWhole;
  if (method == "GET" && !IsDecided(head) && RangeIsOfThisVersion(validators)) {
    kind = ReadByteRange(CgiVariable("HTTP_RANGE"), size, part);
  }
  if (kind == RangeKind::kUnsatisfiable) {
    part = {};
  }
  if (kind != RangeKind::kWhole) {
    head.Add("Status",
             kind == RangeKind::kPart ? "206 Partial Content" : "416 Range Not Satisfiable");
    head.Add("Content-Range", ContentRange(part, size));
  }
  head.Add("Accept-Ranges", "bytes");
  head.Add("Content-Length", std::to_string(part.length));
  return method == "HEAD" ? ByteRange() : part;
}

}  // namespace ORBO
