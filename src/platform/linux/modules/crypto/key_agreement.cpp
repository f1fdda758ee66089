#include "platform/linux/modules/crypto/key_agreement.h"

#include <openssl/core_names.h>
#include <openssl/pem.h>

#include "platform/linux/cleanse.h"
#include "platform/linux/crypto.h"
#include "platform/linux/modules/crypto/bytes.h"
#include "platform/linux/modules/crypto/key_reading.h"

namespace ORBO {
namespace {

constexpr char kUncompressed = 4;
constexpr std::size_t kSecretSize = 32;

// The public key that is the point `point` on the curve of `own`, or null.
Key PublicKey(EVP_PKEY* own, std::string_view point) {
  Key key(EVP_PKEY_new(), EVP_PKEY_free);
  // What is not on the curve is refused here.
  if (point.size() != kPointSize || point.front() != kUncompressed || key == nullptr ||
      EVP_PKEY_copy_parameters(key.get(), own) != 1 ||
      EVP_PKEY_set1_encoded_public_key(key.get(), Bytes(point), point.size()) != 1) {
    return {nullptr, EVP_PKEY_free};
  }
  return key;
}

}  // namespace

bool MakePrivateKey(std::string& pem) {
  pem.clear();
  const Key key(EVP_PKEY_Q_keygen(nullptr, nullptr, "EC", kCurve), EVP_PKEY_free);
  // The memory is overwritten when it is freed.
  const Memory memory(BIO_new(BIO_s_mem()), BIO_free);
  if (key == nullptr || memory == nullptr ||
      PEM_write_bio_PKCS8PrivateKey(memory.get(), key.get(), nullptr, nullptr, 0, nullptr,
                                    nullptr) != 1) {
    return false;
  }
  char* text = nullptr;
  const long size = BIO_get_mem_data(memory.get(), &text);
  pem.assign(text, static_cast<std::size_t>(size));
  return true;
}

bool PublicPoint(std::string_view pem, std::string& point) {
  point.clear();
  const Key key = ReadAnyKey(pem);
  std::size_t size = 0;
  unsigned char bytes[kPointSize];
  if (key == nullptr ||
      EVP_PKEY_get_octet_string_param(key.get(), OSSL_PKEY_PARAM_PUB_KEY, bytes, sizeof bytes,
                                      &size) != 1 ||
      size != kPointSize || bytes[0] != kUncompressed) {
    return false;
  }
  point.assign(reinterpret_cast<const char*>(bytes), size);
  return true;
}

bool AgreeOnKey(std::string_view private_pem, std::string_view point, std::string& secret) {
  secret.clear();
  const Key own = ReadMadeKey(private_pem);
  const Key peer = own != nullptr ? PublicKey(own.get(), point) : Key(nullptr, EVP_PKEY_free);
  const KeyContext context(peer != nullptr ? EVP_PKEY_CTX_new(own.get(), nullptr) : nullptr,
                           EVP_PKEY_CTX_free);
  secret.assign(kSecretSize, '\0');
  std::size_t size = kSecretSize;
  if (context != nullptr && EVP_PKEY_derive_init(context.get()) == 1 &&
      EVP_PKEY_derive_set_peer(context.get(), peer.get()) == 1 &&
      EVP_PKEY_derive(context.get(), Bytes(secret), &size) == 1 && size == kSecretSize) {
    return true;
  }
  Cleanse(secret);
  return false;
}

}  // namespace ORBO
