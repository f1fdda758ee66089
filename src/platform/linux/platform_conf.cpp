#include "platform/linux/platform_conf.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <ctime>

#include "platform/linux/key_value_text.h"
#include "util/Descriptor.h"
#include "util/log.h"
#include "util/number_text.h"
#include "util/paths.h"
#include "util/read_file.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "platform_conf.cpp";

// A file that changed less than this many seconds ago may change again without a
// difference that its times would show.
constexpr std::time_t kUnsettled = 2;

// One request asks several times; within this time the last look at the file holds.
constexpr std::chrono::milliseconds kLookHolds(100);

constexpr std::string_view kSeparators = ", \t";

// The lines that are neither empty nor comments.  Comments are most of the file,
// and every look for a key would pass them.
std::string SettingLines(std::string_view text) {
  std::string lines;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    if (!line.empty() && line.front() != '#') {
      lines.append(line).push_back('\n');
    }
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
  return lines;
}

// The settings in the file, kept for the calls that one request makes.
class Content {
 public:
  // Empty where there is no such file.
  const std::string& Read(const std::string& path);

 private:
  using Clock = std::chrono::steady_clock;

  bool IsCurrent(const struct stat& status) const;

  std::string path_;
  std::string text_;
  Clock::time_point looked_;
  // Of the file when it was read.  Inode 0: nothing is kept.
  struct stat status_ = {};
};

bool Content::IsCurrent(const struct stat& status) const {
  return status_.st_ino != 0 && status.st_ino == status_.st_ino &&
         status.st_dev == status_.st_dev && status.st_size == status_.st_size &&
         status.st_ctim.tv_sec == status_.st_ctim.tv_sec &&
         status.st_ctim.tv_nsec == status_.st_ctim.tv_nsec;
}

const std::string& Content::Read(const std::string& path) {
  const Clock::time_point now = Clock::now();
  if (status_.st_ino != 0 && path == path_ && now - looked_ < kLookHolds) {
    return text_;
  }
  looked_ = now;
  struct stat status = {};
  if (status_.st_ino != 0 && path == path_ && stat(path.c_str(), &status) == 0 &&
      IsCurrent(status)) {
    return text_;
  }
  path_ = path;
  text_.clear();
  status_ = {};
  const Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (file.IsOpen() && fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode) &&
      ReadUpTo(file.get(), static_cast<unsigned long long>(status.st_size), text_) &&
      std::time(nullptr) - status.st_ctim.tv_sec > kUnsettled) {
    status_ = status;
  }
  text_ = SettingLines(text_);
  return text_;
}

}  // namespace

std::string PlatformSetting(std::string_view key) { return PlatformSettings({key}).front(); }

std::vector<std::string> PlatformSettings(std::initializer_list<std::string_view> keys) {
  static Content content;
  const std::string& text = content.Read(RootedPath("/etc/orbo/platform.conf"));
  std::vector<std::string> values;
  values.reserve(keys.size());
  for (const std::string_view key : keys) {
    values.emplace_back(ValueOfKey(text, key));
  }
  return values;
}

bool PlatformSwitch(std::string_view key, bool fallback) {
  const std::string value = PlatformSetting(key);
  if (value == "yes" || value == "no") {
    return value == "yes";
  }
  if (!value.empty()) {
    Log(LOG_ERR, "%s:%d %s is neither yes nor no", kSource, __LINE__, std::string(key).c_str());
  }
  return fallback;
}

std::int64_t NumberSetting(std::string_view key, std::int64_t fallback, std::int64_t smallest,
                           std::int64_t largest) {
  JSON::Integer integer;
  std::int64_t value = 0;
  const std::string text = PlatformSetting(key);
  if (JSON::ReadInteger(text, integer) && JSON::ToSigned(integer, value) && value >= smallest &&
      value <= largest) {
    return value;
  }
  if (!text.empty()) {
    Log(LOG_ERR, "%s:%d %s is no number from %lld to %lld", kSource, __LINE__,
        std::string(key).c_str(), static_cast<long long>(smallest),
        static_cast<long long>(largest));
  }
  return fallback;
}

std::vector<std::string> SplitSetting(std::string_view text) {
  std::vector<std::string> words;
  for (;;) {
    text.remove_prefix(std::min(text.find_first_not_of(kSeparators), text.size()));
    if (text.empty()) {
      return words;
    }
    words.emplace_back(text.substr(0, text.find_first_of(kSeparators)));
    text.remove_prefix(words.back().size());
  }
}

}  // namespace ORBO
