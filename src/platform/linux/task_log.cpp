#include "platform/task_log.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "platform/linux/private_file.h"
#include "platform/linux/task_path.h"
#include "platform/linux/task_store.h"
#include "platform/task.h"
#include "util/Descriptor.h"
#include "util/write_file.h"

namespace KEP::TaskUtil {
namespace {

constexpr int kLongestWait = 10;  // seconds
constexpr std::size_t kHalf = kLargestTaskLog / 2;

// The file begins with the offset of its text, as so many digits and a line end.
constexpr std::size_t kHeadSize = 21;
constexpr std::size_t kLargestFile = kHeadSize + kLargestTaskLog;

std::string Head(std::uint64_t offset) {
  char text[kHeadSize + 1];
  std::snprintf(text, sizeof text, "%020llu\n", static_cast<unsigned long long>(offset));
  return text;
}

// The offset of the text of `file`, the whole content.
std::uint64_t OffsetOf(const std::string& file) {
  return std::strtoull(file.substr(0, kHeadSize).c_str(), nullptr, 10);
}

// The log `file` with the older half of its text dropped.
std::string Shortened(const std::string& file) {
  const std::string_view text = std::string_view(file).substr(kHeadSize);
  const std::size_t half = text.size() - std::min(kHalf, text.size());
  const std::size_t line_end = text.find('\n', half);
  const std::size_t dropped = line_end == std::string_view::npos ? half : line_end + 1;
  return Head(OffsetOf(file) + dropped).append(text.substr(dropped));
}

bool IsRegular(int directory, const std::string& path, struct stat& status) {
  return fstatat(directory, path.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
         S_ISREG(status.st_mode);
}

// Whether the open file is a log that this platform has made in the directory; `status`
// is the file's then.
bool IsLog(int file, int directory, struct stat& status) {
  struct stat parent;
  return fstat(directory, &parent) == 0 && fstat(file, &status) == 0 && S_ISREG(status.st_mode) &&
         status.st_uid == parent.st_uid && status.st_nlink == 1;
}

// Writes `text` at the end of the open file of the size `size`; all of it or nothing.
bool AppendTo(int file, std::int64_t size, std::string_view text) {
  if (ORBO::WriteAll(file, text)) {
    return true;
  }
  // What is there of it is no line of the log.
  return ftruncate(file, size) == 0 && false;
}

}  // namespace

bool appendTaskLog(const char* owner, const char* task_id, const std::string& text) {
  const std::string directory = ORBO::TaskDirectory(owner);
  const std::string record = ORBO::TaskFileName(task_id);
  struct stat status;
  if (directory.empty() || record.empty() ||
      !IsRegular(AT_FDCWD, directory + "/" + record, status)) {
    return false;
  }
  const ORBO::TaskWriter writer(directory, kLongestWait);
  // Under the lock: a log without a record would never go.
  if (!writer.IsReady() || !IsRegular(writer.directory().get(), record, status)) {
    return false;
  }
  const std::string name = ORBO::TaskLogName(task_id);
  const std::string_view kept =
      std::string_view(text).substr(text.size() - std::min(kHalf, text.size()));
  const ORBO::Descriptor file(openat(writer.directory().get(), name.c_str(),
                                     O_WRONLY | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (!file.IsOpen()) {
    return ORBO::CreatePrivateFile(writer.directory(), name, Head(0).append(kept),
                                   ORBO::Durability::kProcess);
  }
  if (!IsLog(file.get(), writer.directory().get(), status)) {
    return false;
  }
  if (static_cast<std::uint64_t>(status.st_size) + kept.size() <= kLargestFile) {
    return AppendTo(file.get(), status.st_size, kept);
  }
  std::string whole;
  std::int64_t modified = 0;
  return ORBO::ReadPrivateFile(directory + "/" + name, kLargestFile, whole, modified) ==
             ORBO::FileState::kRead &&
         whole.size() >= kHeadSize &&
         ORBO::ReplacePrivateFile(writer.directory(), name, Shortened(whole).append(kept));
}

bool readTaskLog(const char* owner, const char* task_id, std::uint64_t offset, std::string& text,
                 std::uint64_t& begin, std::uint64_t& end) {
  if (!checkTaskExists(owner, task_id)) {
    return false;
  }
  std::string whole;
  std::int64_t modified = 0;
  const std::string path = ORBO::TaskDirectory(owner) + "/" + ORBO::TaskLogName(task_id);
  if (ORBO::ReadPrivateFile(path, kLargestFile, whole, modified) != ORBO::FileState::kRead ||
      whole.size() < kHeadSize) {
    whole = Head(0);
  }
  const std::uint64_t first = OffsetOf(whole);
  end = first + whole.size() - kHeadSize;
  begin = std::clamp(offset, first, end);
  text = whole.substr(kHeadSize + static_cast<std::size_t>(begin - first));
  return true;
}

}  // namespace KEP::TaskUtil
