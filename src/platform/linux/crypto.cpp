#include "platform/linux/crypto.h"

#include "platform/linux/module_path.h"
#include "platform/linux/modules/crypto/crypto_module.h"

namespace ORBO {
namespace {

constexpr char kModule[] = "webapi-KEP5-crypto.so";
constexpr std::size_t kDigestSize = 32;

const unsigned char* Bytes(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

}  // namespace

bool HmacSHA256(const std::string& key, const std::string& data, std::string& out) {
  using Hmac = decltype(&WebapiHmacSHA256);
  static const Hmac kHmac = reinterpret_cast<Hmac>(ModuleSymbol(kModule, "WebapiHmacSHA256"));
  unsigned char digest[kDigestSize];
  if (kHmac == nullptr || kHmac(Bytes(key), key.size(), Bytes(data), data.size(), digest) != 1) {
    return false;
  }
  out.assign(reinterpret_cast<const char*>(digest), sizeof digest);
  return true;
}

}  // namespace ORBO
