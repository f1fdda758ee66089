#include "platform/linux/secret_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/platform_conf.h"
#include "util/Descriptor.h"
#include "util/paths.h"
#include "util/read_file.h"

namespace ORBO {
namespace {

constexpr char kSessionDirectory[] = "/run/orbo/sessions";

bool IsTrustedOwner(uid_t owner) {
  Account service;
  return owner == 0 || owner == geteuid() ||
         (geteuid() == 0 && FindServiceAccount(service) && owner == service.user);
}

bool IsTrusted(const struct stat& status) {
  return S_ISREG(status.st_mode) && IsTrustedOwner(status.st_uid) &&
         (status.st_mode & (S_IWGRP | S_IXGRP | S_IRWXO)) == 0;
}

}  // namespace

bool FindServiceAccount(Account& account) {
  if (FindAccount(PlatformSetting("service_user").c_str(), account)) {
    return true;
  }
  struct stat status;
  if (stat(RootedPath(kSessionDirectory).c_str(), &status) != 0) {
    return false;
  }
  account.user = status.st_uid;
  account.group = status.st_gid;
  return true;
}

bool ReadSecretFile(int directory, const char* name, unsigned long long limit, std::string& text,
                    struct stat& status) {
  const Descriptor file(
      openat(directory, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!file.IsOpen() || fstat(file.get(), &status) != 0) {
    return false;
  }
  if (!IsTrusted(status)) {
    errno = EPERM;
    return false;
  }
  if (status.st_size < 0 || static_cast<unsigned long long>(status.st_size) > limit) {
    errno = EFBIG;
    return false;
  }
  return ReadUpTo(file.get(), limit, text);
}

}  // namespace ORBO
