#include "runner/usage_counter.h"

#include <json/value.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <limits>
#include <string_view>
#include <utility>

#include "platform/files.h"
#include "platform/webapi_util.h"
#include "util/json_text.h"
#include "util/json_types.h"
#include "util/read_file.h"

namespace ORBO {
namespace {

constexpr int kDotsOfGroup = 4;
constexpr int kLockSeconds = 2;
constexpr unsigned long long kLargestFile = 1U << 20;
constexpr std::int64_t kLargestCount = std::numeric_limits<std::int64_t>::max();

// The exclusive lock of a counter file while this object lives.
class CounterLock {
 public:
  explicit CounterLock(const std::string& path)
      : is_held_(QLIBCFileLockTimeByFile(path.c_str(), 1, kLockSeconds, &lock_) == 0) {}
  ~CounterLock() {
    if (is_held_) {
      QLIBCFileUnlockByFile(lock_);
    }
  }

  CounterLock(const CounterLock&) = delete;
  CounterLock& operator=(const CounterLock&) = delete;

  bool is_held() const { return is_held_; }

 private:
  int lock_ = -1;
  bool is_held_;
};

// Makes `directory` ready once in a process.  The marker's time tells the collector
// when a process last had something to count.
bool Prepare(const std::string& directory) {
  static std::string prepared;
  if (prepared == directory) {
    return true;
  }
  if (ORBOFSMkdirP(directory.c_str(), 0, 0, static_cast<uid_t>(-1), static_cast<gid_t>(-1), 0600) !=
      0) {
    return false;
  }
  QLIBCFileTouch((directory + "/.timestamp").c_str());
  prepared = directory;
  return true;
}

// Descriptions have no such names, and no name may lead out of the directory.
bool IsFileName(std::string_view api) {
  return !api.empty() && api.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos;
}

// The name up to its fourth dot: an API shares a file with its close relatives.
std::string_view GroupOf(std::string_view api) {
  std::size_t end = std::string_view::npos;
  for (int dots = 0; dots < kDotsOfGroup; ++dots) {
    end = api.find('.', end + 1);
    if (end == std::string_view::npos) {
      break;
    }
  }
  return api.substr(0, end);
}

// What is no counter file is replaced by an empty one.  False where there may be
// one that just cannot be read now.
bool ReadCounters(const std::string& path, Json::Value& counters) {
  std::string text;
  if (!ReadOwnFile(path, kLargestFile, text)) {
    return errno == ENOENT || errno == ELOOP || errno == EFBIG || errno == EINVAL;
  }
  if (!JSON::Parse(text, counters) || !JSON::IsObject(counters)) {
    counters = Json::Value(Json::objectValue);
  }
  return true;
}

// Adds one to the counter `name`.
void Increase(Json::Value& counters, const std::string& name) {
  Json::Value* const counter = JSON::Find(counters, name);
  if (counter == nullptr || JSON::IsEmpty(*counter) || !JSON::IsObject(*counter)) {
    Json::Value first(Json::objectValue);
    first["count"] = 1;
    first["ctime"] = static_cast<Json::UInt64>(std::time(nullptr));
    JSON::Set(counters, name, std::move(first));
    return;
  }
  const std::int64_t previous = JSON::AsInt64(JSON::At(*counter, "count"));
  JSON::Set(*counter, "count", static_cast<Json::Int64>(std::min(previous, kLargestCount - 1) + 1));
}

}  // namespace

bool CountCall(const std::string& directory, const std::string& api, const std::string& method,
               int version) {
  if (!IsFileName(api) || !Prepare(directory)) {
    return false;
  }
  std::string path = directory;
  path.append("/").append(GroupOf(api)).append(".json");
  const CounterLock lock(path + ".lock");
  Json::Value counters(Json::objectValue);
  if (!lock.is_held() || !ReadCounters(path, counters)) {
    return false;
  }
  Increase(counters, api + "_" + std::to_string(version) + "_" + method);
  return WebAPIUtil::WriteJsonFile(path, counters);
}

}  // namespace ORBO
