#include "platform/linux/task_record.h"

#include <unistd.h>

#include <array>
#include <ctime>
#include <tuple>
#include <utility>

#include "platform/linux/platform_conf.h"
#include "util/json_cursor.h"
#include "util/json_text.h"
#include "util/number_text.h"

namespace ORBO {
namespace {

constexpr std::int64_t kNanosecondsPerSecond = 1000000000;
// A process that has forked its worker lives until the worker is known, unless it is
// killed; then the worker gets this time to report.
constexpr std::int64_t kUntilWorkerIsKnown = 10;
constexpr std::int64_t kDefaultGrace = 300;
constexpr std::int64_t kLongestGrace = 31536000;

struct NumberMember {
  const char* name;
  std::int64_t* number;
};

std::array<NumberMember, 8> NumberMembers(TaskRecord& record) {
  return {{{"created", &record.created},
           {"creatorId", &record.creator.pid},
           {"creatorStart", &record.creator.start},
           {"creatorBoot", &record.creator.boot},
           {"workerId", &record.worker.pid},
           {"workerStart", &record.worker.start},
           {"workerBoot", &record.worker.boot},
           {"finished", &record.finished}}};
}

bool ReadNumber(std::string_view text, std::int64_t& out) {
  JSON::Integer integer;
  return JSON::ReadInteger(text, integer) && !integer.negative && JSON::ToSigned(integer, out);
}

bool ReadProperties(std::string_view text, TaskRecord& record) {
  return JSON::ForEachMember(text, [&record](std::string_view name, std::string_view value) {
    record.properties.insert_or_assign(std::string(name), std::string(value));
    return true;
  });
}

// Members of other names are none of this version's.
bool ReadMember(std::string_view name, std::string_view value, TaskRecord& record) {
  for (const NumberMember& member : NumberMembers(record)) {
    if (JSON::QuotedEquals(name, member.name)) {
      return ReadNumber(value, *member.number);
    }
  }
  if (JSON::QuotedEquals(name, "autoRemove")) {
    record.auto_remove = value == "true";
    return record.auto_remove || value == "false";
  }
  return !JSON::QuotedEquals(name, "properties") || ReadProperties(value, record);
}

// What became of a task whose process ended without a word is the task's own wish.
bool IsRemovable(const TaskRecord& record) {
  if (record.finished != 0) {
    return record.auto_remove;
  }
  const auto wish = record.properties.find(std::string_view("\"auto_remove\""));
  return wish != record.properties.end() && wish->second == "true";
}

}  // namespace

TaskRecord NewTaskRecord() {
  TaskRecord record;
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  record.created = now.tv_sec * kNanosecondsPerSecond + now.tv_nsec;
  IdentifyProcess(getpid(), record.creator);
  return record;
}

std::string TaskPropertyName(const char* name) { return JSON::ToText(name); }

std::string ToTaskText(const TaskRecord& record) {
  TaskRecord numbers;
  std::tie(numbers.created, numbers.creator, numbers.worker, numbers.finished) =
      std::tie(record.created, record.creator, record.worker, record.finished);
  std::string text = "{";
  for (const NumberMember& member : NumberMembers(numbers)) {
    text.append("\"").append(member.name).append("\":");
    JSON::AppendInteger(*member.number, text);
    text += ',';
  }
  text.append(record.auto_remove ? "\"autoRemove\":true" : "\"autoRemove\":false");
  text.append(",\"properties\":");
  char separator = '{';
  for (const auto& [name, value] : record.properties) {
    text.append(1, separator).append(name).append(1, ':').append(value);
    separator = ',';
  }
  return text.append(separator == '{' ? "{}}\n" : "}}\n");
}

bool FromTaskText(std::string_view text, TaskRecord& out) {
  TaskRecord record;
  const bool is_read =
      JSON::ForEachMember(text, [&record](std::string_view name, std::string_view value) {
        return ReadMember(name, value, record);
      });
  if (!is_read || record.created == 0) {
    return false;
  }
  out = std::move(record);
  return true;
}

FileState ReadTaskRecord(const std::string& directory, const std::string& file, TaskRecord& out) {
  std::string text;
  std::int64_t modified = 0;
  const FileState state =
      ReadPrivateFile(directory + "/" + file, kLargestTaskRecord, text, modified);
  if (state != FileState::kRead) {
    return state;
  }
  if (!FromTaskText(text, out)) {
    return FileState::kUnusable;
  }
  out.modified = modified;
  return state;
}

bool IsTaskOver(const TaskRecord& record) {
  if (record.finished != 0) {
    return true;
  }
  if (record.worker.pid != 0) {
    return StateOf(record.worker) == ProcessState::kGone;
  }
  const std::int64_t age = std::time(nullptr) - record.created / kNanosecondsPerSecond;
  return (age < 0 || age >= kUntilWorkerIsKnown) && StateOf(record.creator) == ProcessState::kGone;
}

bool IsTaskExpired(const TaskRecord& record) {
  const std::int64_t since = record.finished != 0 ? record.finished : record.modified;
  return IsRemovable(record) && std::time(nullptr) - since >= TaskGrace() && IsTaskOver(record);
}

std::int64_t TaskGrace() { return NumberSetting("task_grace", kDefaultGrace, 0, kLongestGrace); }

}  // namespace ORBO
