#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <climits>

#include "platform/linux/modules/crypto/crypto_module.h"

__attribute__((visibility("default"))) int WebapiHmacSHA256(const unsigned char* key,
                                                            std::size_t key_size,
                                                            const unsigned char* data,
                                                            std::size_t data_size,
                                                            unsigned char* out) {
  // The machine's OpenSSL configuration may load providers and engines, for which
  // one request is too short.
  unsigned int size = 0;
  return key_size <= INT_MAX && OPENSSL_init_crypto(OPENSSL_INIT_NO_LOAD_CONFIG, nullptr) == 1 &&
                 HMAC(EVP_sha256(), key, static_cast<int>(key_size), data, data_size, out, &size) !=
                     nullptr &&
                 size == 32
             ? 1
             : 0;
}
