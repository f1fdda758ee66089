#include "platform/linux/task_sweep.h"

#include <sys/stat.h>

#include <ctime>
#include <utility>

#include "platform/linux/private_file.h"
#include "platform/linux/task_path.h"
#include "platform/linux/task_record.h"
#include "platform/linux/task_store.h"

namespace ORBO {
namespace {

// Its time is that of the last sweep; no task's file has such a name.
constexpr char kMark[] = ".swept";
constexpr std::int64_t kPause = 10;

bool IsSweepDue(const std::string& directory, const std::string& mark) {
  struct stat status;
  if (stat(mark.c_str(), &status) != 0) {
    // Looking at an owner without records makes nothing.
    return stat(directory.c_str(), &status) == 0;
  }
  const std::int64_t age = std::time(nullptr) - status.st_mtim.tv_sec;
  return age < 0 || age >= kPause;
}

bool IsExpired(const std::string& directory, const std::string& file) {
  std::string text;
  std::int64_t modified = 0;
  if (ReadPrivateFile(directory + "/" + file, kLargestTaskRecord, text, modified) !=
      FileState::kRead) {
    return false;
  }
  TaskRecord record;
  if (!FromTaskText(text, record)) {
    // Nobody can use or remove it by its id.
    return std::time(nullptr) - modified >= TaskGrace();
  }
  record.modified = modified;
  return IsTaskExpired(record);
}

// Looks again under the lock: the record may have been changed since.  Where the lock
// is busy the record waits for the next time.
void RemoveExpired(const std::string& directory, const std::string& file) {
  const TaskWriter writer(directory, 0);
  if (writer.IsReady() && IsExpired(directory, file)) {
    writer.Remove(file);
  }
}

}  // namespace

std::vector<ListedTask> CurrentTasks(const std::string& directory, const std::string& prefix) {
  std::vector<ListedTask> tasks;
  for (const std::string& file : PrivateFileNames(directory)) {
    std::string id = TaskIdOfFile(file);
    TaskRecord record;
    if (id.empty() || id.compare(0, prefix.size(), prefix) != 0 ||
        ReadTaskRecord(directory, file, record) != FileState::kRead) {
      continue;
    }
    if (IsTaskExpired(record)) {
      RemoveExpired(directory, file);
    } else {
      tasks.push_back({record.created, std::move(id)});
    }
  }
  return tasks;
}

void SweepTasks(const std::string& directory) {
  const std::string mark = directory + "/" + kMark;
  if (!IsSweepDue(directory, mark)) {
    return;
  }
  if (!TouchPrivateFile(mark)) {
    CreatePrivateFile(directory, kMark, "", Durability::kProcess);
  }
  SweepPrivateDirectory(directory);
  // What was changed within the time of grace has not expired and need not be read.
  for (const std::string& file : PrivateFileNames(directory, TaskGrace() - 1)) {
    if (!TaskIdOfFile(file).empty() && IsExpired(directory, file)) {
      RemoveExpired(directory, file);
    }
  }
}

}  // namespace ORBO
