#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ORBO {

// What the header of a part says of it.
struct PartHeader {
  std::string name;
  // The base name of a file, which may be empty; none for a field.
  std::optional<std::string> file_name;
};

// The boundary that a Content-Type of multipart/form-data names: 1 to 70 legal
// characters (RFC 2046, section 5.1.1), else nothing.
std::string MultipartBoundary(std::string_view content_type);

// Reads the header lines of a part, each with its line end.  False where they are
// malformed, are more than 32, or do not name a form's field (RFC 7578).
bool ParsePartHeader(std::string_view lines, PartHeader& out);

}  // namespace ORBO
