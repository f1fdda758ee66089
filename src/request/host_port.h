#pragma once

#include <string>
#include <string_view>

namespace ORBO {

struct HostPort {
  std::string host;  // an IPv6 literal keeps its brackets
  std::string port;  // "" when none is given
};

// Splits the value of a Host header (RFC 9110, section 7.2).  A port follows
// the last ":"; after an IPv6 literal, the first ":" behind its "]".  False,
// and `out` unchanged, for an empty value or a literal that does not end.
bool SplitHostPort(std::string_view value, HostPort& out);

// The port that the URL scheme `protocol` implies; "" for an unknown scheme.
std::string_view DefaultPort(std::string_view protocol);

}  // namespace ORBO
