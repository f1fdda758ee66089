#include "platform/linux/address.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <system_error>

#include "util/log.h"
#include "util/log_text.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "address.cpp";
constexpr unsigned kAllBits = 128;
constexpr unsigned kMappedBits = 96;
constexpr Address kMappedPrefix = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff};

bool IsIPv4(const Address& address) {
  return std::equal(address.begin(), address.begin() + kMappedBits / 8, kMappedPrefix.begin());
}

bool ParseBits(std::string_view text, unsigned most, unsigned& out) {
  const char* const end = text.data() + text.size();
  unsigned bits = 0;
  const std::from_chars_result result = std::from_chars(text.data(), end, bits);
  if (result.ec != std::errc() || result.ptr != end || bits > most) {
    return false;
  }
  out = bits;
  return true;
}

}  // namespace

bool ParseAddress(std::string_view text, Address& out) {
  // inet_pton would stop at a NUL and take what stands before it.
  if (text.find('\0') != std::string_view::npos) {
    return false;
  }
  in_addr ipv4{};
  if (inet_pton(AF_INET, std::string(text).c_str(), &ipv4) == 1) {
    out = kMappedPrefix;
    std::memcpy(&out[kMappedBits / 8], &ipv4, sizeof ipv4);
    return true;
  }
  in6_addr ipv6{};
  if (inet_pton(AF_INET6, std::string(text.substr(0, text.find('%'))).c_str(), &ipv6) == 1) {
    std::memcpy(out.data(), &ipv6, sizeof ipv6);
    return true;
  }
  return false;
}

std::string AddressText(const Address& address) {
  char text[INET6_ADDRSTRLEN] = {};
  const bool ipv4 = IsIPv4(address);
  inet_ntop(ipv4 ? AF_INET : AF_INET6, ipv4 ? &address[kMappedBits / 8] : address.data(), text,
            sizeof text);
  return text;
}

bool ParseAddressRange(std::string_view text, AddressRange& out) {
  const std::size_t slash = text.find('/');
  AddressRange range;
  range.bits = kAllBits;
  if (!ParseAddress(text.substr(0, slash), range.address)) {
    return false;
  }
  if (slash != std::string_view::npos) {
    // The bits of IPv4 text are counted in its own 32.
    const bool dotted = text.substr(0, slash).find(':') == std::string_view::npos;
    if (!ParseBits(text.substr(slash + 1), dotted ? kAllBits - kMappedBits : kAllBits,
                   range.bits)) {
      return false;
    }
    range.bits += dotted ? kMappedBits : 0;
  }
  out = range;
  return true;
}

bool Contains(const AddressRange& range, const Address& address) {
  const unsigned bytes = range.bits / 8;
  const unsigned rest = range.bits % 8;
  return std::equal(address.begin(), address.begin() + bytes, range.address.begin()) &&
         (rest == 0 || ((address[bytes] ^ range.address[bytes]) >> (8 - rest)) == 0);
}

bool ContainAddress(const std::vector<std::string>& ranges, const Address& address,
                    const char* setting) {
  return std::any_of(ranges.begin(), ranges.end(), [&](const std::string& text) {
    AddressRange range;
    if (!ParseAddressRange(text, range)) {
      Log(LOG_ERR, "%s:%d %s: no address or range: %s", kSource, __LINE__, setting,
          LogText(text).c_str());
      return false;
    }
    return Contains(range, address);
  });
}

}  // namespace ORBO
