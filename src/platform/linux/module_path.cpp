#include "platform/linux/module_path.h"

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>

#include "util/log.h"
#include "util/paths.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "module_path.cpp";
constexpr char kDirectory[] = "modules/";

// The absolute path of an existing file without links in it, else "".
std::string Resolve(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path.c_str(), nullptr),
                                                             std::free);
  return resolved != nullptr ? resolved.get() : "";
}

// The file that this code was loaded from.  The loader has no name for the program
// itself, and its first argument is whatever its caller made it.
std::string OwnFile() {
  Dl_info info;
  void* entry = nullptr;
  if (dladdr1(reinterpret_cast<const void*>(&ModulePath), &info, &entry, RTLD_DL_LINKMAP) == 0 ||
      entry == nullptr) {
    return {};
  }
  const char* const name = static_cast<const link_map*>(entry)->l_name;
  return Resolve(name != nullptr && *name != '\0' ? name : "/proc/self/exe");
}

}  // namespace

std::string ModulePath(const std::string& name) {
  std::string path = Resolve(RootedPath(kWebAPIDirectory) + kDirectory + name);
  if (!path.empty()) {
    return path;
  }
  const std::string own = OwnFile();
  return own.empty() ? "" : Resolve(own.substr(0, own.rfind('/')) + "/../" + kDirectory + name);
}

void* ModuleSymbol(const std::string& name, const char* symbol) {
  const std::string path = ModulePath(name);
  if (path.empty()) {
    Log(LOG_ERR, "%s:%d %s is not installed", kSource, __LINE__, name.c_str());
    return nullptr;
  }
  void* const module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  void* const address = module != nullptr ? dlsym(module, symbol) : nullptr;
  if (address == nullptr) {
    Log(LOG_ERR, "%s:%d cannot use %s: %s", kSource, __LINE__, name.c_str(), dlerror());
  }
  return address;
}

}  // namespace ORBO
