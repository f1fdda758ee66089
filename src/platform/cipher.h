#pragma once

#include <string>

// The platform's ciphers for enciphered request parameters.  Keys are the
// platform's; none of them reaches the rest of the system.

// Deciphers `text` (writable, NUL-terminated) in place into a plain parameter
// line, never longer than it was.  Non-zero on success.
int OrboCgiDecryptParam(char* text);

// Derives the 32-character AES key that belongs to the client's `token` into
// `keyBuffer` of `size` bytes, terminated.  Negative on failure.
int ORBOKptokenGenerateToken(const char* token, char* keyBuffer, int size);

namespace ORBO::CredRequestUtil {

// Deciphers `cipherText` with `key` into `plainText`.  False on failure.
bool GetDecryptAESString(const std::string& key, const std::string& cipherText,
                         std::string& plainText);

}  // namespace ORBO::CredRequestUtil
