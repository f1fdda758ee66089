#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "platform/linux/name_service.h"
#include "platform/linux/private_directory.h"
#include "platform/users.h"
#include "util/Descriptor.h"
#include "util/paths.h"

namespace {

using ORBO::Descriptor;

constexpr char kBase[] = "/var/lib/orbo";
constexpr mode_t kPrivate = 0700;
constexpr mode_t kShared = 0755;  // the levels above, whoever makes them first
constexpr int kOpenFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;

// Whether the open directory belongs to this process's user, or where
// `or_root` allows it to root, and nobody else can write to it.
bool IsOwn(int directory, bool or_root) {
  struct stat status;
  return fstat(directory, &status) == 0 &&
         (status.st_uid == geteuid() || (or_root && status.st_uid == 0)) &&
         (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

// Opens the directory `name` of `parent`, which it then owns, and creates it if
// it is missing.  A symbolic link there is refused: it could lead anywhere.
bool Enter(Descriptor& parent, const std::string& name, bool shared) {
  if (mkdirat(parent.get(), name.c_str(), shared ? kShared : kPrivate) != 0 && errno != EEXIST) {
    return false;
  }
  parent.Reset(openat(parent.get(), name.c_str(), kOpenFlags | O_NOFOLLOW));
  return parent.IsOpen() && IsOwn(parent.get(), shared);
}

// The preference directory of the user or group with the id `id` below `kind`.
// The directories that are shared with other users may be root's.
int PreferenceDirectory(const char* kind, unsigned long id, char* buffer, int size) {
  const std::string base = ORBO::RootedPath(kBase);
  const std::string owner = std::to_string(id);
  const std::string path = base + "/" + kind + "/" + owner + "/preference";
  if (buffer == nullptr || size <= 0 || path.size() >= static_cast<std::size_t>(size)) {
    return -1;
  }
  ORBO::MakeDirectories(base, kShared);
  Descriptor directory(open(base.c_str(), kOpenFlags));
  if (!directory.IsOpen() || !IsOwn(directory.get(), true) || !Enter(directory, kind, true) ||
      !Enter(directory, owner, true) || !Enter(directory, "preference", false)) {
    return -1;
  }
  std::memcpy(buffer, path.c_str(), path.size() + 1);
  return 0;
}

}  // namespace

int ORBOUserPreferenceDirGet(const char* user, char* buffer, int size) {
  const uid_t id = ORBO::UserId(user);
  return id != ORBO::kNoUser ? PreferenceDirectory("users", id, buffer, size) : -1;
}

int ORBOGroupPreferenceDirGet(const char* group, char* buffer, int size) {
  const gid_t id = ORBO::GroupId(group);
  return id != ORBO::kNoGroup ? PreferenceDirectory("groups", id, buffer, size) : -1;
}
