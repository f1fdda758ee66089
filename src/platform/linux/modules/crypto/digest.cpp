#include "platform/linux/modules/crypto/digest.h"

#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <climits>

#include "platform/linux/cleanse.h"
#include "platform/linux/modules/crypto/bytes.h"

namespace ORBO {
namespace {

constexpr std::size_t kSize = 32;
constexpr char kOnlyBlock = 1;

}  // namespace

bool SHA256Digest(std::string_view data, std::string& digest) {
  digest.assign(kSize, '\0');
  if (EVP_Digest(data.data(), data.size(), Bytes(digest), nullptr, EVP_sha256(), nullptr) == 1) {
    return true;
  }
  digest.clear();
  return false;
}

bool HmacDigest(std::string_view key, std::string_view data, std::string& digest) {
  digest.assign(kSize, '\0');
  if (key.size() <= INT_MAX && HMAC(EVP_sha256(), Bytes(key), static_cast<int>(key.size()),
                                    Bytes(data), data.size(), Bytes(digest), nullptr) != nullptr) {
    return true;
  }
  digest.clear();
  return false;
}

// The key is the first block of the expansion.
bool DeriveKey(std::string_view secret, std::string_view salt, std::string_view info,
               std::string& key) {
  key.clear();
  SecretText extracted;
  return HmacDigest(salt, secret, extracted.text) &&
         HmacDigest(extracted.text, std::string(info) + kOnlyBlock, key);
}

}  // namespace ORBO
