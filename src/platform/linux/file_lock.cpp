#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/files.h"
#include "platform/linux/lock_retry.h"
#include "util/Descriptor.h"

namespace {

// Whether the open file is still the one of that name: its holder may have deleted
// it between the opening and the locking, and others lock another file by then.
bool IsStillThere(int file, const char* path) {
  struct stat held;
  struct stat named;
  return fstat(file, &held) == 0 && lstat(path, &named) == 0 && held.st_ino == named.st_ino &&
         held.st_dev == named.st_dev;
}

// The locked file, or -1 with `errno` set: EWOULDBLOCK where another try may do.
int TryLock(const char* path, int operation) {
  ORBO::Descriptor file(
      open(path, O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0600));
  if (!file.IsOpen() || flock(file.get(), operation | LOCK_NB) != 0) {
    return -1;
  }
  if (!IsStillThere(file.get(), path)) {
    errno = EWOULDBLOCK;
    return -1;
  }
  return file.Release();
}

}  // namespace

int QLIBCFileLockTimeByFile(const char* path, int exclusive, int seconds, int* lock) {
  if (path == nullptr || lock == nullptr) {
    errno = EINVAL;
    return -1;
  }
  const int operation = exclusive != 0 ? LOCK_EX : LOCK_SH;
  return ORBO::RetryLock(seconds, [=] { return (*lock = TryLock(path, operation)) >= 0; }) ? 0 : -1;
}

int QLIBCFileUnlockByFile(int lock) { return close(lock); }
