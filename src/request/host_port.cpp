#include "request/host_port.h"

namespace ORBO {

bool SplitHostPort(std::string_view value, HostPort& out) {
  if (value.empty()) {
    return false;
  }
  std::size_t host_end;
  std::size_t colon;
  if (value.front() == '[') {
    const std::size_t bracket = value.rfind(']');
    if (bracket == std::string_view::npos) {
      return false;
    }
    host_end = bracket + 1;
    colon = value.find(':', host_end);
  } else {
    colon = value.rfind(':');
    host_end = colon == std::string_view::npos ? value.size() : colon;
  }
  out.host = value.substr(0, host_end);
  out.port = colon == std::string_view::npos ? std::string_view() : value.substr(colon + 1);
  return true;
}

std::string_view DefaultPort(std::string_view protocol) {
  if (protocol == "http") {
    return "80";
  }
  return protocol == "https" ? "443" : "";
}

}  // namespace ORBO
