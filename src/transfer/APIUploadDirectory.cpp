// Where the files of an upload go for the time of a request.

#include <sys/statvfs.h>

#include <cstdint>
#include <limits>

#include "platform/files.h"
#include "platform/last_error.h"
#include "platform/upload.h"
#include "platform/volume.h"
#include "transfer/APIUploadPrivate.h"
#include "util/paths.h"

namespace ORBO {
namespace {

constexpr char kSystemFile[] = "/etc.defaults/orboinfo.conf";
constexpr unsigned long long kRootReserve = 200ULL << 20;
constexpr unsigned long long kLargestWord = std::numeric_limits<std::uint32_t>::max();
constexpr mode_t kDirectory = 040000;

// The free space of a file system in the width that the system counts it in: from
// 4 GiB on it begins at 0 again.
bool FreeRoom(const std::string& path, std::uint32_t& room) {
  struct statvfs status;
  if (statvfs(path.c_str(), &status) != 0) {
    return false;
  }
  room = static_cast<std::uint32_t>(status.f_frsize) * static_cast<std::uint32_t>(status.f_bfree);
  return true;
}

}  // namespace

bool APIUploadPrivate::CanUploadtoTmp(std::string& dir, unsigned long long size) {
  const std::string tmp = RootedPath("/tmp");
  OrboCgiSweepUploads(tmp.c_str());
  std::uint32_t room = 0;
  if (!FreeRoom(tmp, room)) {
    return false;
  }
  if (size > kLargestWord || room < size) {
    QLIBCErrSet(kPlatformErrorNoRoom);
    return false;
  }
  dir = tmp;
  return true;
}

bool APIUploadPrivate::CanUploadtoRoot(std::string& dir, unsigned long long size) {
  const std::string path = RootedPath("/var/@tmp");
  OrboCgiSweepUploads(path.c_str());
  std::uint32_t room = 0;
  if (!FreeRoom(RootedPath("/"), room)) {
    return false;
  }
  if (size > kLargestWord || room < size + kRootReserve) {
    QLIBCErrSet(kPlatformErrorNoRoom);
    return false;
  }
  if (ORBOFSMkdirP(path.c_str(), 0, 0, static_cast<uid_t>(-1), static_cast<gid_t>(-1),
                   kDirectory | 0700) != 0) {
    QLIBCErrSet(kPlatformErrorDirectory);
    return false;
  }
  dir = path;
  return true;
}

bool APIUploadPrivate::FindUploadTmpDir(std::string& dir, unsigned long long size) {
  if (QLIBCFileCheckKeyValue(RootedPath(kSystemFile).c_str(), "tinnox", "yes", 0) == 0) {
    QLIBVOLUME volume;
    int reason = 0;
    if (VolumeAvailGet(size, &volume, &reason, 1) == 1) {
      dir = volume.mount_path + kVolumeUploads;
      // A directory that cannot be made fails the upload when its file is.
      ORBOFSMkdirP(dir.c_str(), 0, 0, static_cast<uid_t>(-1), static_cast<gid_t>(-1), 0777);
      return true;
    }
  }
  return CanUploadtoTmp(dir, size) || CanUploadtoRoot(dir, size);
}

}  // namespace ORBO
