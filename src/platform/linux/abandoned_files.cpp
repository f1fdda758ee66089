#include "platform/linux/abandoned_files.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <ctime>
#include <memory>
#include <string_view>

#include "platform/linux/base64url.h"
#include "platform/linux/process_identity.h"
#include "platform/linux/random.h"
#include "util/number_text.h"

namespace ORBO {
namespace {

constexpr std::string_view kPrefix = "upload-";
constexpr std::size_t kRandomBytes = 18;
constexpr std::size_t kRandomLength = 24;
constexpr int kMostEntries = 10000;
constexpr std::time_t kLongestUse = 86400;  // a day

// A process with what its id is valid in.
struct Creator {
  ProcessIdentity process;
  std::int64_t id_space = 0;  // 0: could not be told
};

Creator ThisProcess() {
  Creator creator;
  struct stat status;
  if (IdentifyProcess(getpid(), creator.process) && stat("/proc/self/ns/pid", &status) == 0) {
    creator.id_space = static_cast<std::int64_t>(status.st_ino);
  }
  return creator;
}

bool TakeNumber(std::string_view& text, std::int64_t& number) {
  const std::size_t end = text.find('-');
  JSON::Integer integer;
  if (end == std::string_view::npos || !JSON::ReadInteger(text.substr(0, end), integer)) {
    return false;
  }
  text.remove_prefix(end + 1);
  return JSON::ToSigned(integer, number);
}

bool ParseName(std::string_view name, Creator& creator) {
  if (name.substr(0, kPrefix.size()) != kPrefix) {
    return false;
  }
  name.remove_prefix(kPrefix.size());
  ProcessIdentity& process = creator.process;
  return TakeNumber(name, process.pid) && TakeNumber(name, process.start) &&
         TakeNumber(name, process.boot) && TakeNumber(name, creator.id_space) &&
         name.size() == kRandomLength;
}

bool IsAbandoned(const Creator& creator, const Creator& self, std::time_t modified) {
  const bool is_known_here = creator.process.boot != 0 && creator.id_space != 0 &&
                             creator.process.boot == self.process.boot &&
                             creator.id_space == self.id_space;
  return is_known_here ? StateOf(creator.process) == ProcessState::kGone
                       : std::time(nullptr) - modified >= kLongestUse;
}

}  // namespace

std::string TemporaryFileName() {
  const Creator self = ThisProcess();
  std::string name(kPrefix);
  for (const std::int64_t number :
       {self.process.pid, self.process.start, self.process.boot, self.id_space}) {
    name += std::to_string(number) + '-';
  }
  return name + Base64Url(RandomBytes(kRandomBytes));
}

void RemoveAbandonedFiles(const std::string& directory) {
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(directory.c_str()), closedir);
  if (entries == nullptr) {
    return;
  }
  const Creator self = ThisProcess();
  const int descriptor = dirfd(entries.get());
  for (int left = kMostEntries; left > 0; --left) {
    const dirent* const entry = readdir(entries.get());
    if (entry == nullptr) {
      return;
    }
    Creator creator;
    struct stat status;
    if (ParseName(entry->d_name, creator) &&
        fstatat(descriptor, entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
        S_ISREG(status.st_mode) && status.st_uid == geteuid() &&
        IsAbandoned(creator, self, status.st_mtime)) {
      unlinkat(descriptor, entry->d_name, 0);
    }
  }
}

}  // namespace ORBO
