#include "platform/linux/task_store.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/lock_retry.h"
#include "platform/linux/task_path.h"
#include "util/Descriptor.h"

namespace ORBO {
namespace {

constexpr mode_t kPrivate = 0700;

bool IsMissing(const std::string& path) {
  struct stat status;
  return lstat(path.c_str(), &status) != 0 && errno == ENOENT;
}

// The path of a directory that is there now; "" if it cannot be made.  Root gives what
// it makes to the owner of the directory above.
std::string Made(const std::string& path) {
  if (!IsMissing(path)) {
    return path;
  }
  const PrivateDirectory parent(TaskRootDirectory());
  const char* const name = path.c_str() + path.rfind('/') + 1;
  if (!parent.IsOpen() || (mkdirat(parent.get(), name, kPrivate) != 0 && errno != EEXIST)) {
    return "";
  }
  const Descriptor made(
      openat(parent.get(), name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  return made.IsOpen() && parent.GiveToOwner(made.get()) ? path : "";
}

}  // namespace

TaskWriter::TaskWriter(const std::string& directory, int seconds)
    : directory_(Made(directory)), is_ready_(directory_.IsOpen()) {
  // The directory is locked, not a file: records come and go.
  is_ready_ = is_ready_ && RetryLock(seconds, [this] {
                return flock(directory_.get(), LOCK_EX | LOCK_NB) == 0;
              });
}

bool TaskWriter::Create(const std::string& file, const TaskRecord& record) const {
  const std::string text = ToTaskText(record);
  return text.size() <= kLargestTaskRecord &&
         CreatePrivateFile(directory_, file, text, Durability::kProcess);
}

bool TaskWriter::Replace(const std::string& file, const TaskRecord& record) const {
  const std::string text = ToTaskText(record);
  return text.size() <= kLargestTaskRecord && ReplacePrivateFile(directory_, file, text);
}

bool TaskWriter::Remove(const std::string& file) const {
  // First, so that no log is left without the record by which it would be found.
  unlinkat(directory_.get(), TaskLogName(TaskIdOfFile(file).c_str()).c_str(), 0);
  return unlinkat(directory_.get(), file.c_str(), 0) == 0;
}

bool MakeTaskDirectory(const std::string& directory) {
  return PrivateDirectory(Made(directory)).IsOpen();
}

bool IsTaskDirectoryUsable(const std::string& directory) {
  return IsMissing(directory) || PrivateDirectory(directory).IsOpen();
}

}  // namespace ORBO
