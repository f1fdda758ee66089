#include "entry/session_cookie.h"

#include <string_view>

namespace ORBO {

std::string WithSessionCookie(std::string line, const std::string& session_id) {
  constexpr std::string_view kName = "id";
  if (!line.empty()) {
    line += "; ";
    // Plain substring search: clients rely on longer cookie names that end in
    // "id" being renamed too.
    const std::size_t position = line.find("id=");
    if (position != std::string::npos) {
      line.replace(position, kName.size(), "abandoned");
    }
  }
  line += "id=";
  line += session_id;
  return line;
}

}  // namespace ORBO
