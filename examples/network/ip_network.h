#pragma once

#include <array>
#include <cstdint>
#include <string>

// The arithmetic of IP networks.
namespace example {

struct Address {
  std::array<std::uint8_t, 16> bytes = {};  // an IPv4 address fills the first four
  int bits = 0;                             // 32 or 128; 0 for no address
};

// Reads an address that APIValidator::IsIP has passed; a zone is left out.
Address ToAddress(const std::string& text);

std::string ToText(const Address& address);

// The bits that a netmask such as "255.255.255.0" leaves to the network, 24; -1
// for what is none.
int PrefixOfNetmask(const std::string& text);

// The address with every bit behind the first `prefix` cleared, or set.
Address FirstOfNetwork(Address address, int prefix);
Address LastOfNetwork(Address address, int prefix);

bool IsSame(const Address& one, const Address& other);

// fe80::/10, where the routers of IPv6 networks have their addresses.
bool IsLinkLocal(const Address& address);

}  // namespace example
