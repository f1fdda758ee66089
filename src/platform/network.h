#pragma once

// The forms of names and addresses in the network.  Nothing is looked up: a text
// that passes need not exist anywhere.  A null pointer is a malformed text.

// Non-zero when `name` is a host name by RFC 1123, section 2.1:
//   - labels of 1 to 63 ASCII letters, digits and hyphens, joined by dots, no
//     hyphen at either end of a label, no underscore;
//   - names in other scripts in their encoded "xn--" form (RFC 5890) only, which
//     these rules admit by themselves;
//   - at most 253 characters;
//   - a name of two labels or more may be marked as fully qualified by one dot at
//     its end, which does not count as a character;
//   - the last label is no number, decimal or "0x" and hexadecimal digits:
//     resolvers read a name such as "127.1" or "0x7f000001" as an IPv4 address.
int BlQLIBIsHostname(const char* name);

// The same for a domain, which has two labels at least: a bare host or work group
// name is none.
int BlQLIBIsDomain(const char* name);

// The family of the numeric address `text`: 2 for IPv4, 10 for IPv6 (the values
// of AF_INET and AF_INET6 on Linux, whatever the platform), 0 for any other text.
// The forms are those of inet_pton(3): four decimal numbers without leading zeros
// for IPv4, RFC 4291, section 2.2, for IPv6.  An IPv4 address within IPv6
// ("::ffff:1.2.3.4") is IPv6.  A link-local IPv6 address (fe80::/10), which means
// nothing without it, may be followed by "%" and its zone (RFC 4007): 1 to 15
// ASCII letters, digits, dots, hyphens and underscores, the first a letter or
// digit.  Brackets, ports and prefix lengths are no part of an address.
int ORBONetGetAddrType(const char* text);
