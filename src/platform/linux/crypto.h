#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ORBO {

// What the module webapi-KEP5-crypto.so offers.  It alone is linked with the library
// for cryptography, and opened where a request needs that.  An operation that fails
// returns false and leaves its output empty.
struct CryptoModule {
  // SHA-256, and HMAC-SHA256 (RFC 2104); 32 bytes.
  bool (*sha256)(std::string_view data, std::string& digest);
  bool (*hmac_sha256)(std::string_view key, std::string_view data, std::string& digest);
  // HKDF-SHA256 (RFC 5869); 32 bytes.
  bool (*derive_key)(std::string_view secret, std::string_view salt, std::string_view info,
                     std::string& key);

  // Keys on the curve P-256, in PEM: a private one is PKCS #8.
  bool (*make_private_key)(std::string& pem);
  // The point of a public key, or of a private key's public half: 65 bytes,
  // uncompressed.  False for a key of another kind.
  bool (*public_point)(std::string_view pem, std::string& point);
  // ECDH: the x coordinate of the point that a private key as made here and another's
  // `point` make, 32 bytes.  False where `point` is not an uncompressed one on the curve.
  bool (*agree)(std::string_view private_pem, std::string_view point, std::string& secret);

  // AES-256-GCM: the enciphered text with the tag of 16 bytes behind it, and back.
  // Nothing of a text whose tag is wrong is given away.
  bool (*seal)(std::string_view key, std::string_view iv, std::string_view bound_data,
               std::string_view text, std::string& sealed);
  bool (*open)(std::string_view key, std::string_view iv, std::string_view bound_data,
               std::string_view sealed, std::string& text);
};

inline constexpr std::size_t kCipherKeySize = 32;
inline constexpr std::size_t kCipherIvSize = 12;
inline constexpr std::size_t kCipherTagSize = 16;
inline constexpr std::size_t kPointSize = 65;

// The module's one symbol, a function without parameters that returns its table; null
// where the library cannot be used.
inline constexpr char kCryptoModuleEntry[] = "WebapiCryptoModule";
using CryptoModuleEntry = const CryptoModule* (*)();

// The module, opened at the first call and kept; null, and logged, if that fails.
const CryptoModule* OpenCryptoModule();

// HMAC-SHA256 of `data` under `key`.  False, and `out` unchanged, where the module
// cannot be used.
bool HmacSHA256(const std::string& key, const std::string& data, std::string& out);

}  // namespace ORBO
