#include "platform/linux/crypto.h"

#include <dlfcn.h>

#include "platform/linux/module_path.h"
#include "platform/linux/modules/crypto/crypto_module.h"
#include "util/log.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "crypto.cpp";
constexpr char kModule[] = "webapi-KEP5-crypto.so";
constexpr std::size_t kDigestSize = 32;

const unsigned char* Bytes(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

// Null where the module or the symbol is missing.
void* LoadSymbol(const char* symbol) {
  const std::string path = ModulePath(kModule);
  if (path.empty()) {
    Log(LOG_ERR, "%s:%d %s is not installed", kSource, __LINE__, kModule);
    return nullptr;
  }
  void* const module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  void* const address = module != nullptr ? dlsym(module, symbol) : nullptr;
  if (address == nullptr) {
    Log(LOG_ERR, "%s:%d cannot use %s: %s", kSource, __LINE__, kModule, dlerror());
  }
  return address;
}

}  // namespace

bool HmacSHA256(const std::string& key, const std::string& data, std::string& out) {
  using Hmac = decltype(&WebapiHmacSHA256);
  static const Hmac kHmac = reinterpret_cast<Hmac>(LoadSymbol("WebapiHmacSHA256"));
  unsigned char digest[kDigestSize];
  if (kHmac == nullptr || kHmac(Bytes(key), key.size(), Bytes(data), data.size(), digest) != 1) {
    return false;
  }
  out.assign(reinterpret_cast<const char*>(digest), sizeof digest);
  return true;
}

}  // namespace ORBO
