#include "platform/linux/private_directory.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/name_service.h"
#include "platform/linux/platform_conf.h"
#include "util/log.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "private_directory.cpp";
constexpr mode_t kPrivate = 0700;
constexpr mode_t kPassable = 0755;
constexpr int kOpenFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

// What root made before the service's user was known belongs to that user now.
void GiveToService(int directory, struct stat& status) {
  Account account;
  if (geteuid() == 0 && status.st_uid == 0 &&
      FindAccount(PlatformSetting("service_user").c_str(), account) &&
      fchown(directory, account.user, account.group) == 0) {
    status.st_uid = account.user;
    status.st_gid = account.group;
  }
}

}  // namespace

void MakeDirectories(const std::string& path, mode_t mode) {
  for (std::size_t end = path.find('/', 1); end != std::string::npos;
       end = path.find('/', end + 1)) {
    mkdir(path.substr(0, end).c_str(), kPassable);
  }
  mkdir(path.c_str(), mode);
}

PrivateDirectory::PrivateDirectory(const std::string& path) : directory_(-1) {
  directory_.Reset(open(path.c_str(), kOpenFlags));
  if (!IsOpen() && errno == ENOENT) {
    MakeDirectories(path, kPrivate);
    directory_.Reset(open(path.c_str(), kOpenFlags));
  }
  if (IsOpen() && !Adopt()) {
    Log(LOG_ERR, "%s:%d %s is another user's or open to others", kSource, __LINE__, path.c_str());
    directory_.Reset(-1);
    errno = EPERM;
  }
}

bool PrivateDirectory::Adopt() {
  struct stat status;
  if (fstat(get(), &status) != 0) {
    return false;
  }
  GiveToService(get(), status);
  user_ = status.st_uid;
  group_ = status.st_gid;
  // The names in the directory are secrets too, hence nothing for the group.
  return (status.st_mode & (S_IRWXG | S_IRWXO)) == 0 && (geteuid() == 0 || user_ == geteuid());
}

bool PrivateDirectory::GiveToOwner(int file) const {
  return geteuid() != 0 || user_ == 0 || fchown(file, user_, group_) == 0;
}

}  // namespace ORBO
