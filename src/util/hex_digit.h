#pragma once

namespace ORBO {

// The value of a hexadecimal digit in either case; -1 for any other character.
inline int HexDigit(char c) {
  if (c >= '0' && c <= '9') {
    return c - '0';
  }
  const int lower = c | 0x20;
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

}  // namespace ORBO
