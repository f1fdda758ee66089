#include "platform/cipher.h"

// No ciphers are configured in this build.  Every operation fails and leaves its
// output empty, so that enciphered parameters are refused and never taken for
// plain ones.

int OrboCgiDecryptParam(char* /*text*/) { return 0; }

int ORBOKptokenGenerateToken(const char* /*token*/, char* keyBuffer, int size) {
  if (keyBuffer != nullptr && size > 0) {
    keyBuffer[0] = '\0';
  }
  return -1;
}

namespace ORBO::CredRequestUtil {

bool GetDecryptAESString(const std::string& /*key*/, const std::string& /*cipherText*/,
                         std::string& plainText) {
  plainText.clear();
  return false;
}

}  // namespace ORBO::CredRequestUtil
