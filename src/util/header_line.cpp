#include "util/header_line.h"

#include <strings.h>

namespace ORBO {

bool BreaksHeaderLine(std::string_view text) {
  return text.find_first_of(std::string_view("\r\n\0", 3)) != std::string_view::npos;
}

bool AppendHeaderLine(std::string_view name, std::string_view value, std::string& out) {
  if (BreaksHeaderLine(name) || BreaksHeaderLine(value)) {
    return false;
  }
  out.append(name).append(": ").append(value).append("\r\n");
  return true;
}

bool IsSameHeader(std::string_view name, std::string_view other) {
  return name.size() == other.size() && strncasecmp(name.data(), other.data(), name.size()) == 0;
}

}  // namespace ORBO
