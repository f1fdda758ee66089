#include "ShareDirectory.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "file_name.h"

namespace example {
namespace {

constexpr unsigned kLargestNumber = 10000;
constexpr std::size_t kCopyStep = std::size_t{1} << 20;

// Closes a descriptor, or does nothing for -1, and keeps the reason of a failure.
class Closer {
 public:
  explicit Closer(int descriptor) : descriptor_(descriptor) {}
  ~Closer() {
    const int reason = errno;
    if (descriptor_ >= 0) {
      close(descriptor_);
    }
    errno = reason;
  }
  Closer(const Closer&) = delete;
  Closer& operator=(const Closer&) = delete;

 private:
  int descriptor_;
};

std::string RootPrefix() {
  const char* const root = secure_getenv("WEBAPI_ROOT");
  return root == nullptr ? "" : root;
}

int OpenDirectory(const std::string& path) {
  return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

// Makes the directory; those above it are everybody's to pass.
void MakeDirectory(const std::string& path) {
  for (std::size_t end = path.find('/', 1); end != std::string::npos;
       end = path.find('/', end + 1)) {
    mkdir(path.substr(0, end).c_str(), 0755);
  }
  mkdir(path.c_str(), 0700);
}

SharedFile Describe(const std::string& name, const struct stat& status) {
  return {name, static_cast<std::uint64_t>(status.st_size), status.st_mtim.tv_sec};
}

// Tries the names for `client_name`, one number after another, until `give` has given
// one that nobody had.
template <typename Give>
bool GiveName(const std::string& client_name, Give give, std::string& name) {
  for (unsigned number = 1; number <= kLargestNumber; ++number) {
    name = FileName(client_name, number);
    if (give(name.c_str())) {
      return true;
    }
    if (errno != EEXIST) {
      return false;
    }
  }
  return false;
}

bool CopyAll(int from, int to) {
  ssize_t count;
  do {
    count = sendfile(to, from, nullptr, kCopyStep);
  } while (count > 0 || (count < 0 && errno == EINTR));
  return count == 0;
}

}  // namespace

ShareDirectory::ShareDirectory()
    : path_(RootPrefix() + "/var/lib/orbo/share"), directory_(OpenDirectory(path_)) {
  if (directory_ < 0 && errno == ENOENT) {
    MakeDirectory(path_);
    directory_ = OpenDirectory(path_);
  }
}

ShareDirectory::~ShareDirectory() { const Closer closer(directory_); }

bool ShareDirectory::List(std::vector<SharedFile>& files) const {
  files.clear();
  const int again = openat(directory_, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(fdopendir(again), closedir);
  if (entries == nullptr) {
    const Closer closer(again);
    return false;
  }
  while (const dirent* const entry = readdir(entries.get())) {
    struct stat status {};
    const std::string name = entry->d_name;
    if (IsFileName(name) && fstatat(directory_, entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
        S_ISREG(status.st_mode)) {
      files.push_back(Describe(name, status));
    }
  }
  std::sort(files.begin(), files.end(),
            [](const SharedFile& left, const SharedFile& right) { return left.name < right.name; });
  return true;
}

int ShareDirectory::OpenFile(const std::string& name) const {
  if (!IsFileName(name)) {
    errno = ENOENT;
    return -1;
  }
  // What is no regular file must not be waited for.
  const int file =
      openat(directory_, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  struct stat status {};
  if (file >= 0 && fstat(file, &status) == 0 && S_ISREG(status.st_mode)) {
    return file;
  }
  if (file >= 0 || errno == ELOOP) {
    const Closer closer(file);
    errno = ENOENT;
  }
  return -1;
}

bool ShareDirectory::Remove(const std::string& name) const {
  struct stat status {};
  if (!IsFileName(name)) {
    errno = ENOENT;
    return false;
  }
  if (fstatat(directory_, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    return false;
  }
  if (!S_ISREG(status.st_mode)) {
    errno = ENOENT;
    return false;
  }
  return unlinkat(directory_, name.c_str(), 0) == 0;
}

bool ShareDirectory::Take(const std::string& path, const std::string& client_name,
                          SharedFile& taken) const {
  std::string name;
  const auto move = [&](const char* to) {
    return renameat2(AT_FDCWD, path.c_str(), directory_, to, RENAME_NOREPLACE) == 0;
  };
  if (!GiveName(client_name, move, name)) {
    // Another file system, or one that cannot rename without replacing.
    if (errno != EXDEV && errno != EINVAL) {
      return false;
    }
    const int copy = Copy(path);
    const Closer closer(copy);
    const std::string source = "/proc/self/fd/" + std::to_string(copy);
    const auto link = [&](const char* to) {
      return linkat(AT_FDCWD, source.c_str(), directory_, to, AT_SYMLINK_FOLLOW) == 0;
    };
    if (copy < 0 || !GiveName(client_name, link, name)) {
      return false;
    }
  }
  struct stat status {};
  if (fstatat(directory_, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    return false;
  }
  taken = Describe(name, status);
  return true;
}

int ShareDirectory::Copy(const std::string& path) const {
  const int from = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
  const Closer from_closer(from);
  const int copy = from < 0 ? -1 : openat(directory_, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600);
  if (copy >= 0 && !CopyAll(from, copy)) {
    const Closer closer(copy);
    return -1;
  }
  return copy;
}

}  // namespace example
