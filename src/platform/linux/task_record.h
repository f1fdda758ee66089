#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "platform/linux/private_file.h"
#include "platform/linux/process_identity.h"

namespace ORBO {

// Bytes; a larger record is neither written nor read.
inline constexpr std::size_t kLargestTaskRecord = 16U << 20;

// What is stored of a background task.
struct TaskRecord {
  std::int64_t created = 0;   // nanoseconds since the epoch
  ProcessIdentity creator;    // the process that made the record
  ProcessIdentity worker;     // the process that does the work, once that is known
  std::int64_t modified = 0;  // seconds since the epoch; of a record that was read
  std::int64_t finished = 0;  // seconds since the epoch; 0: not marked finished
  bool auto_remove = false;   // the choice that the mark came with
  // The text of each value under its name, as quoted JSON text.  Most are passed on
  // from one version of the record to the next and looked at by nobody.
  std::map<std::string, std::string, std::less<>> properties;
};

// The record of a task that this process makes now.
TaskRecord NewTaskRecord();

// The name of a property as TaskRecord has it.
std::string TaskPropertyName(const char* name);

std::string ToTaskText(const TaskRecord& record);

// False, and `out` unchanged, if `text` is no record.
bool FromTaskText(std::string_view text, TaskRecord& out);

// Reads the record in the file `file` of `directory` into `out`, which is unchanged
// unless the state is kRead.  What is no record is kUnusable.
FileState ReadTaskRecord(const std::string& directory, const std::string& file, TaskRecord& out);

// Whether the task is marked finished or its process is gone.
bool IsTaskOver(const TaskRecord& record);

// Whether the task is over, and the time is over for which its record is kept.
bool IsTaskExpired(const TaskRecord& record);

// Seconds for which the record of a task that is over is kept.
std::int64_t TaskGrace();

}  // namespace ORBO
