#include "platform/linux/base64url.h"

#include <cstdint>

namespace ORBO {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";

}  // namespace

std::string Base64Url(std::string_view bytes) {
  std::string text;
  text.reserve((bytes.size() * 4 + 2) / 3);
  std::uint32_t bits = 0;
  unsigned count = 0;
  for (const char byte : bytes) {
    bits = (bits << 8) | static_cast<unsigned char>(byte);
    for (count += 8; count >= 6; count -= 6) {
      text += kAlphabet[(bits >> (count - 6)) & 63];
    }
  }
  if (count > 0) {
    text += kAlphabet[(bits << (6 - count)) & 63];
  }
  return text;
}

int Base64UrlDigit(char c) {
  if (c >= 'A' && c <= 'Z') {
    return c - 'A';
  }
  if (c >= 'a' && c <= 'z') {
    return c - 'a' + 26;
  }
  if (c >= '0' && c <= '9') {
    return c - '0' + 52;
  }
  return c == '-' ? 62 : c == '_' ? 63 : -1;
}

bool DecodeBase64Url(std::string_view text, std::string& bytes) {
  bytes.clear();
  bytes.reserve(text.size() * 3 / 4);
  std::uint32_t bits = 0;
  unsigned count = 0;
  bool is_valid = true;
  for (const char c : text) {
    const int digit = Base64UrlDigit(c);
    is_valid = is_valid && digit >= 0;
    bits = (bits << 6) | static_cast<std::uint32_t>(digit & 63);
    count += 6;
    if (count >= 8) {
      count -= 8;
      bytes += static_cast<char>((bits >> count) & 255);
    }
  }
  // A last character alone is no byte, and bits that are left over are zero.
  if (is_valid && count < 6 && (bits & ((1U << count) - 1)) == 0) {
    return true;
  }
  bytes.clear();
  return false;
}

}  // namespace ORBO
