#include "platform/linux/private_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <memory>
#include <string_view>
#include <utility>

#include "platform/linux/base64url.h"
#include "platform/linux/private_directory.h"
#include "platform/linux/random.h"
#include "util/Descriptor.h"
#include "util/read_file.h"
#include "util/write_file.h"

namespace ORBO {
namespace {

constexpr mode_t kFileMode = 0600;
constexpr char kTemporaryPrefix[] = ".new-";
constexpr std::int64_t kLeftoverAge = 3600;

// A new file of `directory`.  Its name is gone with this object, whatever has it then;
// a lasting name stays.
class TemporaryFile {
 public:
  explicit TemporaryFile(const PrivateDirectory& directory)
      : directory_(directory),
        name_(kTemporaryPrefix + Base64Url(RandomBytes(12))),
        file_(openat(directory.get(), name_.c_str(),
                     O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kFileMode)) {}

  ~TemporaryFile() {
    if (file_.IsOpen()) {
      const int saved_errno = errno;
      unlinkat(directory_.get(), name_.c_str(), 0);
      errno = saved_errno;
    }
  }

  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  bool Fill(std::string_view text, Durability durability) const {
    return file_.IsOpen() && directory_.GiveToOwner(file_.get()) && WriteAll(file_.get(), text) &&
           (durability == Durability::kProcess || fsync(file_.get()) == 0);
  }

  // Gives the file its lasting name; refused where there is a file of that name.
  bool Publish(const std::string& name, Durability durability) const {
    return linkat(directory_.get(), name_.c_str(), directory_.get(), name.c_str(), 0) == 0 &&
           (durability == Durability::kProcess || fsync(directory_.get()) == 0);
  }

  // Gives the file the name of another one.  The two change places, since some file
  // systems force a file to the disk that is renamed over another one.
  bool Replace(const std::string& name) const {
    const int directory = directory_.get();
    return renameat2(directory, name_.c_str(), directory, name.c_str(), RENAME_EXCHANGE) == 0 ||
           renameat(directory, name_.c_str(), directory, name.c_str()) == 0;
  }

 private:
  const PrivateDirectory& directory_;
  std::string name_;
  Descriptor file_;
};

// Whether the file is of the right user: the process's own, and for root the one
// who owns the directory.
bool HasRightOwner(const std::string& path, uid_t owner) {
  if (owner == geteuid()) {
    return true;
  }
  struct stat directory;
  return geteuid() == 0 && stat(path.substr(0, path.rfind('/') + 1).c_str(), &directory) == 0 &&
         owner == directory.st_uid;
}

// Calls `visit` with every name in the directory but "." and "..".
template <typename Visit>
void ForEachName(const std::string& path, Visit visit) {
  const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(path.c_str()), closedir);
  if (directory == nullptr) {
    return;
  }
  while (const dirent* const entry = readdir(directory.get())) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") {
      visit(dirfd(directory.get()), entry->d_name);
    }
  }
}

bool IsIdle(int directory, const char* name, std::int64_t idle) {
  struct stat status;
  return fstatat(directory, name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
         std::time(nullptr) - status.st_mtim.tv_sec > idle;
}

}  // namespace

bool CreatePrivateFile(const std::string& directory, const std::string& name,
                       const std::string& text, Durability durability) {
  const PrivateDirectory parent(directory);
  return parent.IsOpen() && CreatePrivateFile(parent, name, text, durability);
}

bool CreatePrivateFile(const PrivateDirectory& directory, const std::string& name,
                       const std::string& text, Durability durability) {
  const TemporaryFile file(directory);
  return file.Fill(text, durability) && file.Publish(name, durability);
}

bool ReplacePrivateFile(const PrivateDirectory& directory, const std::string& name,
                        const std::string& text) {
  const TemporaryFile file(directory);
  return file.Fill(text, Durability::kProcess) && file.Replace(name);
}

FileState ReadPrivateFile(const std::string& path, std::size_t limit, std::string& text,
                          std::int64_t& modified) {
  const Descriptor file(
      open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!file.IsOpen()) {
    return errno == ENOENT || errno == ENOTDIR ? FileState::kMissing : FileState::kUnusable;
  }
  struct stat status;
  if (fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
      (status.st_mode & (S_IWGRP | S_IWOTH)) != 0 || !HasRightOwner(path, status.st_uid) ||
      status.st_size > static_cast<off_t>(limit)) {
    return FileState::kUnusable;
  }
  std::string content;
  if (!ReadUpTo(file.get(), static_cast<unsigned long long>(status.st_size), content)) {
    return FileState::kUnusable;
  }
  text = std::move(content);
  modified = status.st_mtim.tv_sec;
  return FileState::kRead;
}

bool TouchPrivateFile(const std::string& path) {
  return utimensat(AT_FDCWD, path.c_str(), nullptr, AT_SYMLINK_NOFOLLOW) == 0;
}

std::vector<std::string> PrivateFileNames(const std::string& path, std::int64_t idle) {
  std::vector<std::string> names;
  ForEachName(path, [&names, idle](int directory, const char* name) {
    if (*name != '.' && (idle < 0 || IsIdle(directory, name, idle))) {
      names.emplace_back(name);
    }
  });
  return names;
}

void SweepPrivateDirectory(const std::string& path) {
  ForEachName(path, [](int directory, const char* name) {
    const std::string_view prefix = std::string_view(name).substr(0, sizeof kTemporaryPrefix - 1);
    if (prefix == kTemporaryPrefix && IsIdle(directory, name, kLeftoverAge)) {
      unlinkat(directory, name, 0);
    }
  });
}

}  // namespace ORBO
