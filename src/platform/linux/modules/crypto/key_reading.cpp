#include "platform/linux/modules/crypto/key_reading.h"

#include <openssl/bn.h>
#include <openssl/core_names.h>
#include <openssl/param_build.h>
#include <openssl/pem.h>

#include <climits>
#include <cstring>
#include <utility>

namespace ORBO {
namespace {

// PKCS #8 for a key on P-256 with its public half, up to the number that the private key
// is.
constexpr unsigned char kHead[] = {0x30, 0x81, 0x87, 0x02, 0x01, 0x00, 0x30, 0x13, 0x06,
                                   0x07, 0x2a, 0x86, 0x48, 0xce, 0x3d, 0x02, 0x01, 0x06,
                                   0x08, 0x2a, 0x86, 0x48, 0xce, 0x3d, 0x03, 0x01, 0x07,
                                   0x04, 0x6d, 0x30, 0x6b, 0x02, 0x01, 0x01, 0x04, 0x20};
constexpr std::size_t kNumberSize = 32;

using Reader = EVP_PKEY* (*)(BIO*, EVP_PKEY**, pem_password_cb*, void*);

// A key that is enciphered itself is none for this system: nobody is asked for a
// password.
int NoPassword(char* /*buffer*/, int /*size*/, int /*writing*/, void* /*argument*/) { return -1; }

Memory ReadableMemory(std::string_view text) {
  return {text.size() <= INT_MAX ? BIO_new_mem_buf(text.data(), static_cast<int>(text.size()))
                                 : nullptr,
          BIO_free};
}

Key ReadKey(std::string_view pem, Reader read) {
  const Memory memory = ReadableMemory(pem);
  Key key(memory != nullptr ? read(memory.get(), nullptr, NoPassword, nullptr) : nullptr,
          EVP_PKEY_free);
  char curve[sizeof kCurve + 1] = {};
  if (key == nullptr || EVP_PKEY_get_group_name(key.get(), curve, sizeof curve, nullptr) != 1 ||
      std::strcmp(curve, kCurve) != 0) {
    return {nullptr, EVP_PKEY_free};
  }
  return key;
}

Key KeyOfNumber(const unsigned char* number) {
  const std::unique_ptr<BIGNUM, decltype(&BN_clear_free)> value(
      BN_bin2bn(number, kNumberSize, BN_secure_new()), BN_clear_free);
  const std::unique_ptr<OSSL_PARAM_BLD, decltype(&OSSL_PARAM_BLD_free)> builder(
      OSSL_PARAM_BLD_new(), OSSL_PARAM_BLD_free);
  const KeyContext context(EVP_PKEY_CTX_new_from_name(nullptr, "EC", nullptr), EVP_PKEY_CTX_free);
  if (value == nullptr || builder == nullptr || context == nullptr ||
      OSSL_PARAM_BLD_push_utf8_string(builder.get(), OSSL_PKEY_PARAM_GROUP_NAME, kCurve, 0) != 1 ||
      OSSL_PARAM_BLD_push_BN(builder.get(), OSSL_PKEY_PARAM_PRIV_KEY, value.get()) != 1) {
    return {nullptr, EVP_PKEY_free};
  }
  const std::unique_ptr<OSSL_PARAM, decltype(&OSSL_PARAM_free)> parameters(
      OSSL_PARAM_BLD_to_param(builder.get()), OSSL_PARAM_free);
  EVP_PKEY* key = nullptr;
  if (parameters != nullptr && EVP_PKEY_fromdata_init(context.get()) == 1) {
    EVP_PKEY_fromdata(context.get(), &key, EVP_PKEY_KEYPAIR, parameters.get());
  }
  return {key, EVP_PKEY_free};
}

}  // namespace

Key ReadAnyKey(std::string_view pem) {
  Key key = ReadKey(pem, PEM_read_bio_PrivateKey);
  return key != nullptr ? std::move(key) : ReadKey(pem, PEM_read_bio_PUBKEY);
}

Key ReadMadeKey(std::string_view pem) {
  const Memory memory = ReadableMemory(pem);
  char* name = nullptr;
  char* header = nullptr;
  unsigned char* data = nullptr;
  long size = 0;
  Key key(nullptr, EVP_PKEY_free);
  if (memory != nullptr && PEM_read_bio(memory.get(), &name, &header, &data, &size) == 1) {
    if (size >= static_cast<long>(sizeof kHead + kNumberSize) &&
        std::memcmp(data, kHead, sizeof kHead) == 0) {
      key = KeyOfNumber(data + sizeof kHead);
    }
    OPENSSL_clear_free(data, static_cast<std::size_t>(size));
    OPENSSL_free(name);
    OPENSSL_free(header);
  }
  return key;
}

}  // namespace ORBO
