#include "platform/linux/modules/crypto/key_agreement.h"

#include <openssl/bio.h>
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/pem.h>

#include <climits>
#include <cstring>
#include <memory>

#include "platform/linux/cleanse.h"
#include "platform/linux/crypto.h"
#include "platform/linux/modules/crypto/bytes.h"

namespace ORBO {
namespace {

using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using Context = std::unique_ptr<EVP_PKEY_CTX, decltype(&EVP_PKEY_CTX_free)>;
using Memory = std::unique_ptr<BIO, decltype(&BIO_free)>;

constexpr char kCurve[] = "prime256v1";  // the library's name of P-256
constexpr char kUncompressed = 4;
constexpr std::size_t kSecretSize = 32;

// A key that is enciphered itself is none for this system: nobody is asked for a
// password.
int NoPassword(char* /*buffer*/, int /*size*/, int /*writing*/, void* /*argument*/) { return -1; }

using Reader = EVP_PKEY* (*)(BIO*, EVP_PKEY**, pem_password_cb*, void*);

// The key on P-256 that `read` finds in `pem`, or null.
Key ReadKey(std::string_view pem, Reader read) {
  const Memory memory(
      pem.size() <= INT_MAX ? BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())) : nullptr,
      BIO_free);
  Key key(memory != nullptr ? read(memory.get(), nullptr, NoPassword, nullptr) : nullptr,
          EVP_PKEY_free);
  char curve[sizeof kCurve + 1] = {};
  if (key == nullptr || EVP_PKEY_get_group_name(key.get(), curve, sizeof curve, nullptr) != 1 ||
      std::strcmp(curve, kCurve) != 0) {
    return {nullptr, EVP_PKEY_free};
  }
  return key;
}

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
  Key key = ReadKey(pem, PEM_read_bio_PrivateKey);
  if (key == nullptr) {
    key = ReadKey(pem, PEM_read_bio_PUBKEY);
  }
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
  const Key own = ReadKey(private_pem, PEM_read_bio_PrivateKey);
  const Key peer = own != nullptr ? PublicKey(own.get(), point) : Key(nullptr, EVP_PKEY_free);
  const Context context(peer != nullptr ? EVP_PKEY_CTX_new(own.get(), nullptr) : nullptr,
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
