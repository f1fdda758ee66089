#include <openssl/crypto.h>

#include <cstdint>

#include "platform/linux/crypto.h"
#include "platform/linux/modules/crypto/authenticated_cipher.h"
#include "platform/linux/modules/crypto/digest.h"
#include "platform/linux/modules/crypto/key_agreement.h"

extern "C" __attribute__((visibility("default"))) const ORBO::CryptoModule* WebapiCryptoModule();

extern "C" const ORBO::CryptoModule* WebapiCryptoModule() {
  static constexpr ORBO::CryptoModule kModule = {
      ORBO::SHA256Digest, ORBO::HmacDigest, ORBO::DeriveKey,   ORBO::MakePrivateKey,
      ORBO::PublicPoint,  ORBO::AgreeOnKey, ORBO::SealedByKey, ORBO::OpenedByKey};
  // One request is too short for the machine's OpenSSL configuration, which may load
  // providers and engines, and for freeing at exit what goes with the process.  What else
  // would make this faster, to go without the tables of all algorithms' names, holds for
  // the whole process, and certificates of the relay's targets are checked by those tables.
  constexpr std::uint64_t kNothingMore = OPENSSL_INIT_NO_LOAD_CONFIG | OPENSSL_INIT_NO_ATEXIT;
  return OPENSSL_init_crypto(kNothingMore, nullptr) == 1 ? &kModule : nullptr;
}
