#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ORBO {

// The keys that clients encipher parameters for: pairs on the curve P-256, a file each
// below /var/lib/orbo/keys.  The newest key is the current one, of which clients are
// told; one before it is accepted for `parameter_key_grace` seconds (platform.conf)
// after the next one was made, and then deleted.
//
// Times are milliseconds since the epoch.

struct ParameterKey {
  std::string id;    // see ParameterKeyId
  std::string spki;  // the public half, as in spki.h, in base64url
  std::int64_t created = 0;
  std::int64_t expires = 0;  // 0 for the current key
};

// Without a trailing "/".
std::string ParameterKeyDirectory();

// The id of a public key: the first 16 hexadecimal digits of the SHA-256 of `spki`.
// "" where the crypto module cannot be used.
std::string ParameterKeyId(std::string_view spki);

// Gives the current key, which is made where there is none.  False with `errno` set;
// ENOSYS where the crypto module cannot be used.
bool CurrentParameterKey(ParameterKey& key);

// Makes a key, which is the current one from now on.  False as above.
bool RotateParameterKeys(ParameterKey& key);

// The keys that are accepted at the time `now`, the current one first.  Deletes those
// whose time is over.
std::vector<ParameterKey> ParameterKeys(std::int64_t now);

// Reads the private half, in PEM, of the key `id` if that is accepted at the time
// `now`; else false.
bool ReadParameterKey(std::string_view id, std::int64_t now, std::string& pem);

}  // namespace ORBO
