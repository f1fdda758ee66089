#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/files.h"
#include "platform/linux/private_directory.h"

namespace {

constexpr uid_t kSameOwner = static_cast<uid_t>(-1);
constexpr gid_t kSameGroup = static_cast<gid_t>(-1);

bool IsDirectory(const char* path) {
  struct stat status;
  return stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

mode_t WithSearch(mode_t mode) {
  constexpr mode_t kRead = S_IRUSR | S_IRGRP | S_IROTH;
  constexpr mode_t kWrite = S_IWUSR | S_IWGRP | S_IWOTH;
  return mode | (mode & kRead) >> 2 | (mode & kWrite) >> 1;
}

}  // namespace

int ORBOFSMkdirP(const char* path, int /*flags*/, int /*reserved*/, uid_t owner, gid_t group,
                 mode_t mode) {
  if (path == nullptr) {
    errno = EINVAL;
    return -1;
  }
  if (!IsDirectory(path)) {
    ORBO::MakeDirectories(path, WithSearch(mode));
    const int error = errno;
    if (!IsDirectory(path)) {
      errno = error;
      return -1;
    }
  }
  return owner == kSameOwner && group == kSameGroup ? 0 : chown(path, owner, group);
}
