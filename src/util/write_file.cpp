#include "util/write_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "util/Descriptor.h"

namespace ORBO {
namespace {

// Whether `file` is the draft that an earlier writer left, and as this one would make
// it: a file that somebody opened to others would be that again at every second turn.
bool IsDraft(int file, struct stat& status) {
  return fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink == 1 &&
         status.st_uid == geteuid() && (status.st_mode & 07777U) == 0600U;
}

bool WriteDraft(const std::string& draft, std::string_view text) {
  const int flags = O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  struct stat status {};
  Descriptor file(open(draft.c_str(), flags, 0600));
  if (!file.IsOpen() || !IsDraft(file.get(), status)) {
    unlink(draft.c_str());
    status.st_size = 0;
    file.Reset(open(draft.c_str(), flags | O_EXCL, 0600));
  }
  const auto size = static_cast<off_t>(text.size());
  return file.IsOpen() && WriteAll(file.get(), text) &&
         (status.st_size <= size || ftruncate(file.get(), size) == 0);
}

// The two change places, so that the old file is the next draft: to make a new file
// and delete the old one each time would cost more than all the rest.  Besides, some
// file systems force a file to the disk that is renamed over another one.
bool Publish(const std::string& draft, const std::string& path) {
  return renameat2(AT_FDCWD, draft.c_str(), AT_FDCWD, path.c_str(), RENAME_EXCHANGE) == 0 ||
         std::rename(draft.c_str(), path.c_str()) == 0;
}

}  // namespace

bool WriteAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = write(descriptor, text.data(), text.size());
    if (count >= 0) {
      text.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

bool ReplaceFile(const std::string& path, std::string_view text) {
  const std::string draft = path + ".new";
  if (WriteDraft(draft, text) && Publish(draft, path)) {
    return true;
  }
  const int error = errno;
  unlink(draft.c_str());
  errno = error;
  return false;
}

}  // namespace ORBO
