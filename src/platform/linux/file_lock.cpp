#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <ctime>

#include "platform/files.h"
#include "util/Descriptor.h"

namespace {

constexpr std::int64_t kSecond = 1000000000;  // times are in nanoseconds
constexpr std::int64_t kFirstPause = 100000;
constexpr std::int64_t kLongestPause = 10000000;

std::int64_t Now() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC, &time);
  return std::int64_t{time.tv_sec} * kSecond + time.tv_nsec;
}

void Pause(std::int64_t length) {
  const timespec time{static_cast<std::time_t>(length / kSecond),
                      static_cast<long>(length % kSecond)};
  nanosleep(&time, nullptr);
}

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
  const std::int64_t deadline = Now() + std::max(seconds, 0) * kSecond;
  for (std::int64_t pause = kFirstPause;; pause = std::min(2 * pause, kLongestPause)) {
    const int file = TryLock(path, operation);
    if (file >= 0) {
      *lock = file;
      return 0;
    }
    const std::int64_t left = deadline - Now();
    if (errno != EWOULDBLOCK || left <= 0) {
      return -1;
    }
    Pause(std::min(pause, left));
  }
}

int QLIBCFileUnlockByFile(int lock) { return close(lock); }
