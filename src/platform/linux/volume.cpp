#include "platform/volume.h"

#include <sys/statvfs.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

#include "platform/linux/abandoned_files.h"
#include "platform/linux/platform_conf.h"
#include "util/log.h"
#include "util/paths.h"

namespace {

constexpr char kSource[] = "volume.cpp";

// Whether `size` bytes are free for unprivileged users below `path`.
bool HasRoom(const std::string& path, std::uint64_t size) {
  struct statvfs status;
  if (statvfs(path.c_str(), &status) != 0) {
    ORBO::Log(LOG_ERR, "%s:%d volume %s: %s", kSource, __LINE__, path.c_str(),
              std::strerror(errno));
    return false;
  }
  return std::uint64_t{status.f_frsize} * status.f_bavail >= size;
}

}  // namespace

int VolumeAvailGet(unsigned long long size, QLIBVOLUME* volume, int* reason, int /*flags*/) {
  *reason = 0;
  for (std::string setting : ORBO::SplitSetting(ORBO::PlatformSetting("volumes"))) {
    *reason = 1;
    setting.erase(setting.find_last_not_of('/') + 1);
    const std::string path = ORBO::RootedPath(setting);
    ORBO::RemoveAbandonedFiles(path + kVolumeUploads);
    if (HasRoom(path + "/", size)) {
      volume->mount_path = path;
      return 1;
    }
  }
  return 0;
}
