#include "platform/linux/http_conditions.h"

#include "platform/linux/cgi_variables.h"
#include "util/trim.h"
#include "util/utc_text.h"

namespace ORBO {
namespace {

constexpr char kDateFormat[] = "%a, %d %b %Y %H:%M:%S GMT";
constexpr const char* kOlderDateFormats[] = {"%A, %d-%b-%y %H:%M:%S GMT", "%a %b %d %H:%M:%S %Y"};

std::string_view Condition(const char* variable) { return Trim(CgiVariable(variable)); }

// Takes the first entity tag of a list off `list`; empty at its end and where the rest
// is malformed.
std::string_view TakeTag(std::string_view& list) {
  const std::size_t begin = list.find_first_not_of(", \t");
  list.remove_prefix(begin == std::string_view::npos ? list.size() : begin);
  const std::size_t quote = list.substr(0, 2) == "W/" ? 2 : 0;
  if (list.size() <= quote || list[quote] != '"') {
    return {};
  }
  const std::size_t end = list.find('"', quote + 1);
  if (end == std::string_view::npos) {
    return {};
  }
  const std::string_view tag = list.substr(0, end + 1);
  list.remove_prefix(end + 1);
  return tag;
}

std::string_view WithoutWeakness(std::string_view tag) {
  return tag.substr(0, 2) == "W/" ? tag.substr(2) : tag;
}

// Compares strongly, where a weak tag matches nothing, or weakly.
bool HoldsTag(std::string_view list, std::string_view etag, bool strongly) {
  if (list == "*") {
    return true;
  }
  for (std::string_view tag = TakeTag(list); !tag.empty(); tag = TakeTag(list)) {
    if (strongly ? tag == etag && tag.front() == '"'
                 : WithoutWeakness(tag) == WithoutWeakness(etag)) {
      return true;
    }
  }
  return false;
}

bool IsRead() {
  const std::string_view method = CgiVariable("REQUEST_METHOD");
  return method == "GET" || method == "HEAD";
}

// Whether the content is as old as the date in `variable` or older; `otherwise` without
// such a date.
bool IsUnmodified(const Validators& validators, const char* variable, bool otherwise) {
  std::time_t date = 0;
  return ReadHttpDate(Condition(variable), date) ? validators.modified <= date : otherwise;
}

}  // namespace

Verdict JudgeConditions(const Validators& validators) {
  const std::string_view match = Condition("HTTP_IF_MATCH");
  const std::string_view none_match = Condition("HTTP_IF_NONE_MATCH");
  const bool is_current = match.empty() ? IsUnmodified(validators, "HTTP_IF_UNMODIFIED_SINCE", true)
                                        : HoldsTag(match, validators.etag, true);
  if (!is_current) {
    return Verdict::kFailed;
  }
  if (none_match.empty()) {
    return IsRead() && IsUnmodified(validators, "HTTP_IF_MODIFIED_SINCE", false)
               ? Verdict::kNotModified
               : Verdict::kProceed;
  }
  if (!HoldsTag(none_match, validators.etag, false)) {
    return Verdict::kProceed;
  }
  return IsRead() ? Verdict::kNotModified : Verdict::kFailed;
}

bool RangeIsOfThisVersion(const Validators& validators) {
  const std::string_view version = Condition("HTTP_IF_RANGE");
  if (version.empty()) {
    return true;
  }
  if (version.find('"') != std::string_view::npos) {
    return HoldsTag(version, validators.etag, true);
  }
  std::time_t date = 0;
  return ReadHttpDate(version, date) && date == validators.modified;
}

std::string HttpDate(std::time_t time) { return FormatUtc(time, kDateFormat); }

bool ReadHttpDate(std::string_view text, std::time_t& time) {
  const std::string date(text);
  if (date.empty() || ParseUtc(date, kDateFormat, time)) {
    return !date.empty();
  }
  for (const char* format : kOlderDateFormats) {
    if (ParseUtc(date, format, time)) {
      return true;
    }
  }
  return false;
}

}  // namespace ORBO
