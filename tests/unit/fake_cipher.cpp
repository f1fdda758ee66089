// Stands for the platform's ciphers: "sealed:" and a key before a text seal it.

#include <cstring>
#include <string>

#include "platform/cipher.h"

namespace {

constexpr char kSeal[] = "sealed:";

}  // namespace

int OrboCgiDecryptParam(char* text) {
  if (std::strncmp(text, kSeal, sizeof kSeal - 1) != 0) {
    return 0;
  }
  std::memmove(text, text + sizeof kSeal - 1, std::strlen(text) - sizeof kSeal + 2);
  return 1;
}

int ORBOKptokenGenerateToken(const char* token, char* key_buffer, int size) {
  if (std::strlen(token) >= static_cast<std::size_t>(size)) {
    return -1;
  }
  std::strcpy(key_buffer, token);
  return 0;
}

bool ORBO::CredRequestUtil::GetDecryptAESString(const std::string& key,
                                                const std::string& cipher_text,
                                                std::string& plain_text) {
  const std::string seal = key + ":";
  if (cipher_text.compare(0, seal.size(), seal) != 0) {
    return false;
  }
  plain_text = cipher_text.substr(seal.size());
  return true;
}
