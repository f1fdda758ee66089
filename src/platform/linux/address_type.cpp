#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>

#include <string>
#include <string_view>

#include "platform/network.h"

namespace {

static_assert(AF_INET == 2 && AF_INET6 == 10, "the operation's results");

constexpr char kLettersAndDigits[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";

// Narrower than what the kernel takes as an interface's name: zones end up in
// configuration files and command lines.
bool IsZone(std::string_view zone) {
  return !zone.empty() && zone.size() < IFNAMSIZ && zone.find_first_of(kLettersAndDigits) == 0 &&
         zone.find_first_not_of(std::string(kLettersAndDigits) + "._-") == std::string_view::npos;
}

bool IsIPv6(std::string_view text) {
  const std::size_t percent = text.find('%');
  const bool has_zone = percent != std::string_view::npos;
  in6_addr address{};
  if (inet_pton(AF_INET6, std::string(text.substr(0, percent)).c_str(), &address) != 1) {
    return false;
  }
  return !has_zone || (IN6_IS_ADDR_LINKLOCAL(&address) && IsZone(text.substr(percent + 1)));
}

}  // namespace

int ORBONetGetAddrType(const char* text) {
  if (text == nullptr) {
    return 0;
  }
  in_addr address{};
  if (inet_pton(AF_INET, text, &address) == 1) {
    return AF_INET;
  }
  return IsIPv6(text) ? AF_INET6 : 0;
}
