#include "platform/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

int QLIBCFileExist(const char* path) {
  struct stat status;
  if (path == nullptr) {
    errno = EINVAL;
    return -1;
  }
  if (stat(path, &status) == 0) {
    return 1;
  }
  return errno == ENOENT || errno == ENOTDIR ? 0 : -1;
}

int QLIBCSysUnlink(const char* path) {
  if (path == nullptr) {
    errno = EINVAL;
    return -1;
  }
  return unlink(path);
}

int QLIBCFileUTime(const char* path, int /*flags*/, int /*reserved*/) {
  if (path == nullptr) {
    errno = EINVAL;
    return -1;
  }
  return utimensat(AT_FDCWD, path, nullptr, AT_SYMLINK_NOFOLLOW);
}
