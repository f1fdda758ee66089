#pragma once

#include <string>

// The platform's ciphers for enciphered request parameters.  Keys are the
// platform's; none of them reaches the rest of the system.  Each operation accepts what
// a client has enciphered once, and that only for some minutes after it was.

namespace ORBO {

// The reserved names of parameters.
inline constexpr char kCipherTextMember[] = "__cIpHeRtExT";    // an enciphered line
inline constexpr char kCipherTokenMember[] = "__cIpHeRtOkEn";  // goes with the line, unread
inline constexpr char kKeyTokenMember[] = "__nEkOtReHpIc";     // what the next one's key is in
inline constexpr char kKeyedTextMember[] = "__tXeTrEhPiC";     // a line by a key of its own

}  // namespace ORBO

// Deciphers `text` (writable, NUL-terminated) in place into a plain parameter
// line, never longer than it was.  Non-zero on success.
int OrboCgiDecryptParam(char* text);

// Derives the 32-character AES key that belongs to the client's `token` into
// `key_buffer` of `size` bytes, terminated.  Negative on failure.
int ORBOKptokenGenerateToken(const char* token, char* key_buffer, int size);

namespace ORBO::CredRequestUtil {

// Deciphers `cipher_text` with `key` into `plain_text`.  False on failure.
bool GetDecryptAESString(const std::string& key, const std::string& cipher_text,
                         std::string& plain_text);

}  // namespace ORBO::CredRequestUtil
