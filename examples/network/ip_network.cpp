#include "ip_network.h"

#include <arpa/inet.h>

namespace example {
namespace {

constexpr int kBitsIPv4 = 32;
constexpr int kBitsIPv6 = 128;

// The bits of byte `index` that belong to the host.
unsigned HostBits(int index, int prefix) {
  const int network = prefix - index * 8;
  return network <= 0 ? 0xffU : network >= 8 ? 0U : 0xffU >> network;
}

Address WithHostBits(Address address, int prefix, unsigned fill) {
  for (int i = 0; i < address.bits / 8; ++i) {
    const unsigned host = HostBits(i, prefix);
    std::uint8_t& byte = address.bytes[static_cast<std::size_t>(i)];
    byte = static_cast<std::uint8_t>((byte & ~host) | (fill & host));
  }
  return address;
}

}  // namespace

Address ToAddress(const std::string& text) {
  Address address;
  if (inet_pton(AF_INET, text.c_str(), address.bytes.data()) == 1) {
    address.bits = kBitsIPv4;
  } else if (inet_pton(AF_INET6, text.substr(0, text.find('%')).c_str(), address.bytes.data()) ==
             1) {
    address.bits = kBitsIPv6;
  }
  return address;
}

std::string ToText(const Address& address) {
  char text[INET6_ADDRSTRLEN] = {};
  inet_ntop(address.bits == kBitsIPv4 ? AF_INET : AF_INET6, address.bytes.data(), text,
            sizeof text);
  return text;
}

int PrefixOfNetmask(const std::string& text) {
  const Address mask = ToAddress(text);
  Address ones;
  ones.bits = kBitsIPv4;
  ones.bytes.fill(0xff);
  for (int prefix = 0; prefix <= kBitsIPv4; ++prefix) {
    if (IsSame(mask, FirstOfNetwork(ones, prefix))) {
      return prefix;
    }
  }
  return -1;
}

Address FirstOfNetwork(Address address, int prefix) { return WithHostBits(address, prefix, 0); }

Address LastOfNetwork(Address address, int prefix) { return WithHostBits(address, prefix, 0xff); }

bool IsSame(const Address& one, const Address& other) {
  // The bytes behind an IPv4 address are no part of it.
  for (int i = 0; i < one.bits / 8; ++i) {
    if (one.bytes[static_cast<std::size_t>(i)] != other.bytes[static_cast<std::size_t>(i)]) {
      return false;
    }
  }
  return one.bits == other.bits;
}

bool IsLinkLocal(const Address& address) {
  return address.bits == kBitsIPv6 && address.bytes[0] == 0xfe && (address.bytes[1] & 0xc0) == 0x80;
}

}  // namespace example
