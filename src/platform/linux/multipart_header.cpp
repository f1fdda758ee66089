#include "platform/linux/multipart_header.h"

#include <algorithm>
#include <utility>

#include "platform/linux/header_parameters.h"
#include "platform/webapi_util.h"
#include "util/trim.h"
#include "util/utf8.h"

namespace ORBO {
namespace {

constexpr std::size_t kLongestBoundary = 70;
constexpr int kMostLines = 32;
constexpr std::string_view kLineEnd = "\r\n";

bool IsBoundaryCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         std::string_view("'()+_,-./:=? ").find(c) != std::string_view::npos;
}

// Browsers write a quote as "%22" and nothing else in place of an escape.
std::string WithQuotes(std::string text) {
  constexpr std::string_view kQuote = "%22";
  for (std::size_t at = 0; (at = text.find(kQuote, at)) != std::string::npos; ++at) {
    text.replace(at, kQuote.size(), "\"");
  }
  return text;
}

// An extended value (RFC 5987): charset, language and percent-encoded text.
bool DecodeExtended(const std::string& value, std::string& out) {
  const std::size_t language = value.find('\'');
  const std::size_t text = value.find('\'', language + 1);
  if (language == std::string::npos || text == std::string::npos ||
      LowerCase(value.substr(0, language)) != "utf-8") {
    return false;
  }
  out = WebAPIUtil::URLDecode(value.substr(text + 1), true);
  return UTF8::IsPrintable(out);
}

// What follows the last separator of either system.  Never a name that leads
// elsewhere where it is put behind a directory.
std::string BaseName(const std::string& path) {
  std::string name = path.substr(path.find_last_of("/\\") + 1);
  return name == "." || name == ".." ? std::string() : name;
}

bool ReadDisposition(std::string_view text, PartHeader& out) {
  HeaderValue value;
  if (!ParseHeaderValue(text, value) || value.word != "form-data" ||
      value.Parameter("name") == nullptr) {
    return false;
  }
  out.name = WithQuotes(*value.Parameter("name"));
  if (const std::string* const extended = value.Parameter("filename*")) {
    std::string name;
    if (!DecodeExtended(*extended, name)) {
      return false;
    }
    out.file_name = BaseName(name);
  } else if (const std::string* const plain = value.Parameter("filename")) {
    out.file_name = BaseName(WithQuotes(*plain));
  }
  return true;
}

// Takes the first header with its continuation lines.
bool TakeHeader(std::string_view& lines, std::string& name, std::string& value, int& count) {
  std::string header;
  do {
    const std::size_t end = lines.find(kLineEnd);
    if (end == std::string_view::npos || ++count > kMostLines) {
      return false;
    }
    header += lines.substr(0, end);
    lines.remove_prefix(end + kLineEnd.size());
  } while (!lines.empty() && (lines.front() == ' ' || lines.front() == '\t'));
  const std::size_t colon = header.find(':');
  if (colon == std::string::npos || colon == 0 ||
      header.find_first_of(std::string_view("\r\n\0", 3)) != std::string::npos ||
      header.find_first_of(" \t") < colon) {
    return false;
  }
  name = LowerCase(header.substr(0, colon));
  value = Trim(std::string_view(header).substr(colon + 1));
  return true;
}

}  // namespace

std::string MultipartBoundary(std::string_view content_type) {
  HeaderValue value;
  if (!ParseHeaderValue(content_type, value) || value.word != "multipart/form-data") {
    return "";
  }
  const std::string* const boundary = value.Parameter("boundary");
  const bool is_usable = boundary != nullptr && !boundary->empty() && boundary->back() != ' ' &&
                         boundary->size() <= kLongestBoundary &&
                         std::all_of(boundary->begin(), boundary->end(), IsBoundaryCharacter);
  return is_usable ? *boundary : "";
}

bool ParsePartHeader(std::string_view lines, PartHeader& out) {
  bool has_disposition = false;
  std::string name;
  std::string value;
  for (int count = 0; !lines.empty();) {
    if (!TakeHeader(lines, name, value, count)) {
      return false;
    }
    if (name != "content-disposition") {
      continue;
    }
    if (has_disposition || !ReadDisposition(value, out)) {
      return false;
    }
    has_disposition = true;
  }
  return has_disposition;
}

}  // namespace ORBO
