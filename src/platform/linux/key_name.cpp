#include "platform/linux/key_name.h"

#include <algorithm>

#include "platform/linux/base64url.h"
#include "platform/linux/random.h"

namespace ORBO {

std::string NewKeyName(char letter, std::size_t bytes) {
  return letter + Base64Url(RandomBytes(bytes));
}

bool IsKeyName(std::string_view text, char letter, std::size_t bytes) {
  return text.size() == 1 + (bytes * 4 + 2) / 3 && text[0] == letter &&
         std::all_of(text.begin(), text.end(), [](char c) { return Base64UrlDigit(c) >= 0; });
}

}  // namespace ORBO
