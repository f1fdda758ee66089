#include "platform/cipher.h"

// No ciphers are configured in this build.  Every operation fails and leaves its
// output empty, so that enciphered parameters are refused and never taken for
// plain ones.

int OrboCgiDecryptParam(char* /*text*/) { return 0; }

int ORBOKptokenGenerateToken(const char* /*token*/, char* key_buffer, int size) {
  if (key_buffer != nullptr && size > 0) {
    key_buffer[0] = '\0';
  }
  return -1;
}

namespace ORBO::CredRequestUtil {

bool GetDecryptAESString(const std::string& /*key*/, const std::string& /*cipher_text*/,
                         std::string& plain_text) {
  plain_text.clear();
  return false;
}

}  // namespace ORBO::CredRequestUtil
