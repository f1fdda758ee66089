#include <arpa/inet.h>
#include <netinet/in.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/cgi.h"

namespace {

bool Write(int family, const void* address, char* buffer, std::size_t size) {
  return inet_ntop(family, address, buffer, static_cast<socklen_t>(size)) != nullptr;
}

// An IPv4 client of a server that listens on IPv6 only has a mapped address; it
// is the same client under either.
bool WriteIPv6(const in6_addr& address, char* buffer, std::size_t size) {
  if (IN6_IS_ADDR_V4MAPPED(&address)) {
    return Write(AF_INET, &address.s6_addr[12], buffer, size);
  }
  return Write(AF_INET6, &address, buffer, size);
}

}  // namespace

int OrboCgiGetRemoteIP(char* buffer, std::size_t size) {
  const char* const text = std::getenv("REMOTE_ADDR");
  if (text == nullptr || buffer == nullptr) {
    return 0;
  }
  in_addr ipv4{};
  if (inet_pton(AF_INET, text, &ipv4) == 1) {
    return Write(AF_INET, &ipv4, buffer, size) ? 1 : 0;
  }
  // The zone of a link-local address ("%eth0") is no part of the address.
  const std::string address(text, std::strcspn(text, "%"));
  in6_addr ipv6{};
  const bool known = inet_pton(AF_INET6, address.c_str(), &ipv6) == 1;
  return known && WriteIPv6(ipv6, buffer, size) ? 1 : 0;
}
