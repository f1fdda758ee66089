#include <webapi/APIRequest.h>

#include <utility>

#include "platform/task.h"
#include "platform/task_log.h"
#include "polling/APIPollingPrivate.h"

namespace ORBO {

bool APIPollingPrivate::WriteLog(const std::string& text) {
  std::string owner;
  std::string id;
  if (request_ == nullptr || !request_->IsPollingTask() ||
      !GetUserAndTaskID(request_->GetPollingTaskId(), owner, id)) {
    error_ = APIPolling::ERROR_BAD_PARAMETER;
    return false;
  }
  if (!KEP::TaskUtil::appendTaskLog(owner.c_str(), id.c_str(), text)) {
    error_ = APIPolling::ERROR_UNAVAILABLE;
    return false;
  }
  return true;
}

bool APIPollingPrivate::ReadLog(const std::string& full_id, std::uint64_t offset,
                                Json::Value& out) {
  std::string owner;
  std::string id;
  if (!FindTask(full_id, owner, id)) {
    return false;
  }
  // Looked at before the log: what is written later belongs to a task that goes on.
  const bool is_finished = KEP::Task(owner.c_str(), id.c_str()).isFinished();
  std::string text;
  std::uint64_t begin = 0;
  std::uint64_t end = 0;
  if (!KEP::TaskUtil::readTaskLog(owner.c_str(), id.c_str(), offset, text, begin, end)) {
    error_ = APIPolling::ERROR_NO_TASK;
    return false;
  }
  Json::Value log(Json::objectValue);
  log["text"] = text;
  log["offset"] = static_cast<Json::UInt64>(begin);
  log["next"] = static_cast<Json::UInt64>(end);
  log["finish"] = is_finished;
  out.swap(log);
  return true;
}

}  // namespace ORBO
