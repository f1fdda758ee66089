#include "platform/linux/key_name.h"

#include <algorithm>

#include "platform/linux/random.h"

namespace ORBO {
namespace {

bool IsBase64UrlCharacter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
         c == '_';
}

}  // namespace

std::string NewKeyName(char letter, std::size_t bytes) {
  return letter + Base64Url(RandomBytes(bytes));
}

bool IsKeyName(std::string_view text, char letter, std::size_t bytes) {
  return text.size() == 1 + (bytes * 4 + 2) / 3 && text[0] == letter &&
         std::all_of(text.begin(), text.end(), IsBase64UrlCharacter);
}

}  // namespace ORBO
