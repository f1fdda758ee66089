#include <openssl/crypto.h>

#include "platform/linux/crypto.h"
#include "platform/linux/modules/crypto/authenticated_cipher.h"
#include "platform/linux/modules/crypto/digest.h"
#include "platform/linux/modules/crypto/key_agreement.h"

extern "C" __attribute__((visibility("default"))) const ORBO::CryptoModule* WebapiCryptoModule();

extern "C" const ORBO::CryptoModule* WebapiCryptoModule() {
  static constexpr ORBO::CryptoModule kModule = {
      ORBO::SHA256Digest, ORBO::HmacDigest, ORBO::DeriveKey,   ORBO::MakePrivateKey,
      ORBO::PublicPoint,  ORBO::AgreeOnKey, ORBO::SealedByKey, ORBO::OpenedByKey};
  // The machine's OpenSSL configuration may load providers and engines: one request is too
  // short for them.  What else would make this faster, to go without the tables of all
  // algorithms' names, holds for the whole process, and certificates of the relay's targets
  // are checked by those tables.
  return OPENSSL_init_crypto(OPENSSL_INIT_NO_LOAD_CONFIG, nullptr) == 1 ? &kModule : nullptr;
}
