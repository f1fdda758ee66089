#include "platform/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "util/Descriptor.h"

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

int QLIBCFileTouch(const char* path) {
  if (QLIBCFileUTime(path, 0, 0) == 0) {
    return 0;
  }
  if (errno != ENOENT) {
    return -1;
  }
  const ORBO::Descriptor file(
      open(path, O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0600));
  return file.IsOpen() ? 0 : -1;
}
