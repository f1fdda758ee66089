#pragma once

#include <ctime>
#include <string>
#include <string_view>

namespace ORBO {

// What tells one version of a content from another (RFC 9110, section 8.8).
struct Validators {
  std::string etag;      // with its quotes
  std::time_t modified;  // whole seconds
};

enum class Verdict { kProceed, kNotModified, kFailed };

// What the conditions of the request make of it (RFC 9110, section 13.2.2).  They are
// read from the CGI variables; dates that are none do not count.
Verdict JudgeConditions(const Validators& validators);

// Whether the range that the request asks for is one of this version (section 13.1.5);
// so it is without If-Range.
bool RangeIsOfThisVersion(const Validators& validators);

std::string HttpDate(std::time_t time);
// A date in any of the three forms (section 5.6.7); false for anything else.
bool ReadHttpDate(std::string_view text, std::time_t& time);

}  // namespace ORBO
