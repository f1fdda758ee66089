#pragma once

#include <openssl/bio.h>
#include <openssl/evp.h>

#include <memory>
#include <string_view>

namespace ORBO {

using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using KeyContext = std::unique_ptr<EVP_PKEY_CTX, decltype(&EVP_PKEY_CTX_free)>;
using Memory = std::unique_ptr<BIO, decltype(&BIO_free)>;

inline constexpr char kCurve[] = "prime256v1";  // the library's name of P-256

// The key on P-256 that `pem` holds, private or public, or null.
Key ReadAnyKey(std::string_view pem);

// The same for what MakePrivateKey has written.  Finding out what kind of key there is
// takes longer than all the rest of opening a message.
Key ReadMadeKey(std::string_view pem);

}  // namespace ORBO
