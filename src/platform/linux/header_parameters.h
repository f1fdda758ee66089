#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ORBO {

// The value of a MIME header: a word, and parameters (RFC 2045, section 5.1).
struct HeaderValue {
  std::string word;  // in lower case
  // Names in lower case, each once.
  std::vector<std::pair<std::string, std::string>> parameters;

  // Null where there is none.
  const std::string* Parameter(std::string_view name) const;
};

// Reads the value of a header.  In quoted texts a backslash escapes quotes and
// backslashes only: browsers send those of a path as they are.  False where it is
// malformed or names a parameter twice, which two readers may take for different
// ones.
bool ParseHeaderValue(std::string_view text, HeaderValue& out);

// `text` in lower case, whatever the locale is.
std::string LowerCase(std::string_view text);

}  // namespace ORBO
