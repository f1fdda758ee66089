#include "util/write_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "util/Descriptor.h"

namespace ORBO {
namespace {

int OpenDraft(const std::string& draft) {
  const int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  const int file = open(draft.c_str(), flags, 0600);
  if (file >= 0 || errno != EEXIST) {
    return file;
  }
  unlink(draft.c_str());
  return open(draft.c_str(), flags, 0600);
}

bool WriteDraft(const std::string& draft, std::string_view text) {
  const Descriptor file(OpenDraft(draft));
  return file.IsOpen() && WriteAll(file.get(), text);
}

// A file that is renamed over another one is forced to the disk by some file
// systems, at a hundred times the cost of all the rest; not so one that changes
// places with it.
bool Publish(const std::string& draft, const std::string& path) {
  if (renameat2(AT_FDCWD, draft.c_str(), AT_FDCWD, path.c_str(), RENAME_EXCHANGE) != 0) {
    return std::rename(draft.c_str(), path.c_str()) == 0;
  }
  unlink(draft.c_str());
  return true;
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
