#include "platform/cipher.h"

#include <cstring>
#include <string>

#include "platform/linux/cleanse.h"
#include "platform/linux/parameter_cipher.h"
#include "platform/linux/wall_clock.h"

using ORBO::SecretText;

int OrboCgiDecryptParam(char* text) {
  SecretText line;
  if (text == nullptr || !ORBO::OpenLine(text, ORBO::WallClock(), line.text)) {
    return 0;
  }
  std::memcpy(text, line.text.c_str(), line.text.size() + 1);
  return 1;
}

int ORBOKptokenGenerateToken(const char* token, char* key_buffer, int size) {
  if (key_buffer == nullptr || size <= 0) {
    return -1;
  }
  key_buffer[0] = '\0';
  SecretText key;
  if (token == nullptr || !ORBO::OpenKeyText(token, ORBO::WallClock(), key.text) ||
      key.text.size() >= static_cast<std::size_t>(size)) {
    return -1;
  }
  std::memcpy(key_buffer, key.text.c_str(), key.text.size() + 1);
  return 0;
}

namespace ORBO::CredRequestUtil {

bool GetDecryptAESString(const std::string& key, const std::string& cipher_text,
                         std::string& plain_text) {
  return OpenLineByKeyText(key, cipher_text, WallClock(), plain_text);
}

}  // namespace ORBO::CredRequestUtil
