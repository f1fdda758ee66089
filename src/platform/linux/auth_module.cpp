#include "platform/linux/auth_module.h"

#include "platform/linux/module_path.h"

namespace ORBO {
namespace {

constexpr char kFile[] = "webapi-KEP5-auth.so";

const AuthModule* Open() {
  void* const entry = ModuleSymbol(kFile, kAuthModuleEntry);
  return entry != nullptr ? reinterpret_cast<AuthModuleEntry>(entry)() : nullptr;
}

}  // namespace

const AuthModule* OpenAuthModule() {
  static const AuthModule* const kModule = Open();
  return kModule;
}

}  // namespace ORBO
