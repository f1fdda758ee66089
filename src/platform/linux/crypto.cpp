#include "platform/linux/crypto.h"

#include <utility>

#include "platform/linux/module_path.h"

namespace ORBO {
namespace {

constexpr char kFile[] = "webapi-KEP5-crypto.so";

const CryptoModule* Open() {
  void* const entry = ModuleSymbol(kFile, kCryptoModuleEntry);
  return entry != nullptr ? reinterpret_cast<CryptoModuleEntry>(entry)() : nullptr;
}

}  // namespace

const CryptoModule* OpenCryptoModule() {
  static const CryptoModule* const kModule = Open();
  return kModule;
}

bool HmacSHA256(const std::string& key, const std::string& data, std::string& out) {
  const CryptoModule* const crypto = OpenCryptoModule();
  std::string digest;
  if (crypto == nullptr || !crypto->hmac_sha256(key, data, digest)) {
    return false;
  }
  out = std::move(digest);
  return true;
}

}  // namespace ORBO
