#include "platform/confinement.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/apparmor_profile.h"
#include "util/Descriptor.h"
#include "util/log.h"

namespace {

using ChangeHat = int (*)(const char* hat, unsigned long token);

constexpr char kSource[] = "confinement.cpp";
constexpr char kProfileFile[] = "/proc/self/attr/apparmor/current";

ChangeHat LoadChangeHat() {
  // Kept open for the rest of the process, which has only a few calls to make.
  void* const library = dlopen("libapparmor.so.1", RTLD_NOW | RTLD_LOCAL);
  void* const symbol = library != nullptr ? dlsym(library, "aa_change_hat") : nullptr;
  if (symbol == nullptr) {
    ORBO::Log(LOG_ERR, "%s:%d cannot use libapparmor: %s", kSource, __LINE__, dlerror());
  }
  return reinterpret_cast<ChangeHat>(symbol);
}

}  // namespace

int ORBO_aa_has_profile_restricted() {
  const ORBO::Descriptor file(open(kProfileFile, O_RDONLY | O_CLOEXEC));
  char text[4096];
  const ssize_t size = file.IsOpen() ? read(file.get(), text, sizeof text) : -1;
  if (size < 0) {
    // Without AppArmor the file is missing or cannot be read at all.  Any other
    // refusal is a profile's.
    return errno == ENOENT || errno == EINVAL ? 0 : 1;
  }
  return ORBO::IsConfining({text, static_cast<std::size_t>(size)}) ? 1 : 0;
}

int ORBO_aa_change_hat(const char* hat, unsigned long token) {
  static const ChangeHat kChangeHat = LoadChangeHat();
  if (kChangeHat == nullptr) {
    errno = ENOSYS;
    return -1;
  }
  return kChangeHat(hat, token);
}
