#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ORBO {

// An IPv4 or IPv6 address, in the 16 bytes of IPv6.  An IPv4 address has its mapped
// form: a client of a server that listens on IPv6 only is the same client.
using Address = std::array<std::uint8_t, 16>;

// Reads an address in the form of inet_pton(3).  The zone of a link-local address
// ("%eth0") is no part of it and is ignored.  False, and `out` unchanged, for any
// other text.
bool ParseAddress(std::string_view text, Address& out);

// The address in the form of inet_ntop(3), IPv4 where it is one.
std::string AddressText(const Address& address);

struct AddressRange {
  Address address = {};
  unsigned bits = 0;  // of the address that count, from its start
};

// Reads an address, which is a range of its own, or a range such as "10.0.0.0/8" or
// "fd00::/8".
bool ParseAddressRange(std::string_view text, AddressRange& out);

bool Contains(const AddressRange& range, const Address& address);

// Whether any of `ranges`, as text, holds `address`.  Text that is no range holds
// nothing; it is logged as one of `setting`.
bool ContainAddress(const std::vector<std::string>& ranges, const Address& address,
                    const char* setting);

}  // namespace ORBO
