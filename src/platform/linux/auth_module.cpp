#include "platform/linux/auth_module.h"

#include <dlfcn.h>

#include <string>

#include "platform/linux/module_path.h"
#include "util/log.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "auth_module.cpp";
constexpr char kFile[] = "webapi-KEP5-auth.so";

const AuthModule* Open() {
  const std::string path = ModulePath(kFile);
  if (path.empty()) {
    Log(LOG_ERR, "%s:%d %s is not installed", kSource, __LINE__, kFile);
    return nullptr;
  }
  void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  void* const entry = library != nullptr ? dlsym(library, kAuthModuleEntry) : nullptr;
  if (entry == nullptr) {
    Log(LOG_ERR, "%s:%d cannot use %s: %s", kSource, __LINE__, kFile, dlerror());
    return nullptr;
  }
  return reinterpret_cast<AuthModuleEntry>(entry)();
}

}  // namespace

const AuthModule* OpenAuthModule() {
  static const AuthModule* const kModule = Open();
  return kModule;
}

}  // namespace ORBO
