#include <string_view>

#include "platform/webapi_util.h"
#include "util/hex_digit.h"

namespace ORBO::WebAPIUtil {
namespace {

constexpr char kHexDigits[] = "0123456789ABCDEF";

// The byte that the escape at the start of `text` stands for; -1 if it is none.
int EscapedByte(std::string_view text) {
  if (text.size() < 3 || text[0] != '%') {
    return -1;
  }
  const int high = HexDigit(text[1]);
  const int low = HexDigit(text[2]);
  return high < 0 || low < 0 ? -1 : high * 16 + low;
}

// Unlike isalnum, whatever the locale is.
bool IsUnreserved(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
         c == '.' || c == '_' || c == '~';
}

}  // namespace

std::string URLDecode(const std::string& text, bool keep_plus) {
  std::string decoded;
  decoded.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const int byte = EscapedByte(std::string_view(text).substr(i));
    if (byte >= 0) {
      decoded += static_cast<char>(byte);
      i += 2;
    } else {
      decoded += text[i] == '+' && !keep_plus ? ' ' : text[i];
    }
  }
  return decoded;
}

std::string URLEncode(const std::string& text) {
  std::string encoded;
  encoded.reserve(text.size());
  for (const char c : text) {
    if (IsUnreserved(c)) {
      encoded += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      encoded += '%';
      encoded += kHexDigits[byte >> 4];
      encoded += kHexDigits[byte & 0xF];
    }
  }
  return encoded;
}

}  // namespace ORBO::WebAPIUtil
