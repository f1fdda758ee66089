#include <algorithm>
#include <tuple>

#include "platform/linux/base64url.h"
#include "platform/linux/random.h"
#include "platform/linux/task_path.h"
#include "platform/linux/task_record.h"
#include "platform/linux/task_store.h"
#include "platform/linux/task_sweep.h"
#include "platform/task.h"

namespace KEP {
namespace {

constexpr std::size_t kRandomBytes = 16;

}  // namespace

TaskMgr::TaskMgr(const char* owner) : owner_(owner == nullptr ? "" : owner), is_open_(false) {
  const std::string directory = ORBO::TaskDirectory(owner);
  is_open_ = !directory.empty() && ORBO::IsTaskDirectoryUsable(directory);
}

Json::Value TaskMgr::getAllTaskId(const char* prefix) const {
  Json::Value ids(Json::arrayValue);
  if (!is_open_) {
    return ids;
  }
  const std::string directory = ORBO::TaskDirectory(owner_.c_str());
  ORBO::SweepTasks(directory);
  std::vector<ORBO::ListedTask> tasks =
      ORBO::CurrentTasks(directory, prefix == nullptr ? "" : prefix);
  std::sort(tasks.begin(), tasks.end(), [](const auto& a, const auto& b) {
    return std::tie(a.created, a.id) < std::tie(b.created, b.id);
  });
  for (const ORBO::ListedTask& task : tasks) {
    ids.append(task.id);
  }
  return ids;
}

namespace TaskUtil {

std::string getUniqueID(const char* owner, const char* prefix) {
  const std::string directory = ORBO::TaskDirectory(owner);
  std::string id = (prefix == nullptr ? std::string() : prefix) +
                   ORBO::Base64Url(ORBO::RandomBytes(kRandomBytes));
  if (directory.empty() || ORBO::TaskFileName(id.c_str()).empty() ||
      !ORBO::MakeTaskDirectory(directory)) {
    return "";
  }
  ORBO::SweepTasks(directory);
  return id;
}

bool checkTaskExists(const char* owner, const char* task_id) {
  const std::string directory = ORBO::TaskDirectory(owner);
  const std::string file = ORBO::TaskFileName(task_id);
  ORBO::TaskRecord record;
  return !directory.empty() && !file.empty() &&
         ORBO::ReadTaskRecord(directory, file, record) == ORBO::FileState::kRead;
}

}  // namespace TaskUtil

}  // namespace KEP
