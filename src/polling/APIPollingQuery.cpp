#include <signal.h>

#include <webapi/APIRequest.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "platform/task.h"
#include "polling/APIPollingPrivate.h"
#include "polling/task_owners.h"
#include "util/json_types.h"
#include "util/log.h"
#include "util/log_text.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "APIPolling";

void LogId(int line, const char* before, const std::string& full_id, const char* after) {
  Log(LOG_ERR, "%s:%d %s[%s]%s", kSource, line, before, LogText(full_id).c_str(), after);
}

// What a client sees of a task: its last body, and how things stand.
Json::Value StatusOf(KEP::Task& task) {
  Json::Value status = task.getProperty("body");
  if (status.type() != Json::objectValue) {
    status = Json::Value(Json::objectValue);
  }
  status["finish"] = task.isFinished();
  status["auto_remove"] = task.getProperty("auto_remove");
  if (task.hasProperty("info")) {
    status["info"] = task.getProperty("info");
  }
  return status;
}

}  // namespace

bool APIPollingPrivate::FindTask(const std::string& full_id, std::string& owner, std::string& id) {
  if (request_ == nullptr) {
    return Fail(329, "unknown request", APIPolling::ERROR_BAD_PARAMETER);
  }
  if (full_id.empty()) {
    return Fail(335, "bad parameters", APIPolling::ERROR_BAD_PARAMETER);
  }
  if (!ReadId(full_id, owner, id)) {
    LogId(342, "Invalid task id", full_id, "");
    error_ = APIPolling::ERROR_NOT_ALLOWED;
    return false;
  }
  if (!KEP::TaskUtil::checkTaskExists(owner.c_str(), id.c_str())) {
    LogId(348, "No such task id", full_id, "");
    error_ = APIPolling::ERROR_NO_TASK;
    return false;
  }
  return true;
}

bool APIPollingPrivate::Status(const std::string& full_id, Json::Value& out) {
  std::string owner;
  std::string id;
  if (!FindTask(full_id, owner, id)) {
    return false;
  }
  KEP::Task task(owner.c_str(), id.c_str());
  if (!task.isOpen()) {
    return Fail(355, "Cannot get task", APIPolling::ERROR_UNAVAILABLE);
  }
  out = StatusOf(task);
  return true;
}

bool APIPollingPrivate::Status(const Json::Value& full_ids, Json::Value& out) {
  if (request_ == nullptr) {
    return Fail(271, "unknown request", APIPolling::ERROR_BAD_PARAMETER);
  }
  if (!JSON::IsArray(full_ids)) {
    return Fail(277, "bad parameters", APIPolling::ERROR_BAD_PARAMETER);
  }
  // Apart until the end: the caller may have given one object for both.
  Json::Value by_id(Json::objectValue);
  for (const Json::Value& element : full_ids) {
    const std::string full_id = JSON::AsString(element);
    std::string owner;
    std::string id;
    if (!ReadId(full_id, owner, id)) {
      LogId(292, "Invalid task id", full_id, "");
      continue;
    }
    Json::Value& status = by_id[full_id];
    status = Json::Value(Json::objectValue);
    if (!KEP::TaskUtil::checkTaskExists(owner.c_str(), id.c_str())) {
      continue;
    }
    KEP::Task task(owner.c_str(), id.c_str());
    if (task.isOpen()) {
      status = StatusOf(task);
    } else {
      Fail(300, "Cannot get task", 0);
    }
  }
  out.swap(by_id);
  return true;
}

bool APIPollingPrivate::Stop(const std::string& full_id, bool remove) {
  if (request_ == nullptr) {
    return Fail(382, "unknown request", APIPolling::ERROR_BAD_PARAMETER);
  }
  std::string owner;
  std::string id;
  if (!GetUserAndTaskID(full_id, owner, id)) {
    LogId(388, "Invalid task id", full_id, "");
    error_ = APIPolling::ERROR_BAD_PARAMETER;
    return false;
  }
  if (!CheckTaskUser(owner)) {
    error_ = APIPolling::ERROR_NOT_ALLOWED;
    return false;
  }
  if (!KEP::TaskUtil::checkTaskExists(owner.c_str(), id.c_str())) {
    LogId(399, "task id", full_id, " does not exist");
    error_ = APIPolling::ERROR_NO_TASK;
    return false;
  }
  KEP::Task task(owner.c_str(), id.c_str());
  if (!task.isOpen()) {
    LogId(406, "cannot get task by task id", full_id, "");
    error_ = APIPolling::ERROR_UNAVAILABLE;
    return false;
  }
  const int pid = task.getCreatePid();
  if (pid > 0 && !IsKilled(pid, task.signalCreatePid(SIGTERM))) {
    LogId(412, "send SIGTERM to task id", full_id, " fail");
    error_ = APIPolling::ERROR_NOT_STOPPED;
    return false;
  }
  if (!task.finish(remove)) {
    LogId(418, "set task id", full_id, " to finish fail");
    error_ = APIPolling::ERROR_NOT_FINISHED;
    return false;
  }
  // A process that was not known yet may have said its id before the mark, and nobody
  // can after it.
  if (pid == 0) {
    task.signalCreatePid(SIGTERM);
  }
  return true;
}

bool APIPollingPrivate::DoKill(int pid) {
  if (pid < 1) {
    return Fail(117, "invalid process id", 0);
  }
  return IsKilled(pid, kill(pid, SIGTERM) == 0 ? 0 : errno);
}

bool APIPollingPrivate::IsKilled(int pid, int error) {
  if (error == 0 || error == ESRCH) {
    return true;
  }
  Log(LOG_ERR, "%s:%d Failed to kill %d, reason=%s(%d)", kSource, 121, pid, std::strerror(error),
      error);
  return false;
}

bool APIPollingPrivate::OwnerOfGroup(const std::string& group, std::string& owner) {
  if (group == "user") {
    owner = OwnerOfLogin();
  } else if (group == kEveryoneGroup) {
    owner = kEveryoneOwner;
  } else if (group != kAdminGroup) {
    error_ = APIPolling::ERROR_NOT_ALLOWED;
    return false;
  } else if (!request_->IsAdmin()) {
    error_ = APIPolling::ERROR_NOT_ADMIN;
    return false;
  } else {
    owner = kAdminOwner;
  }
  return true;
}

bool APIPollingPrivate::List(const std::string& prefix, const Json::Value& groups,
                             Json::Value& out) {
  if (request_ == nullptr) {
    return Fail(440, "unknown request", APIPolling::ERROR_BAD_PARAMETER);
  }
  if (!JSON::IsArray(groups)) {
    return Fail(446, "bad parameters", APIPolling::ERROR_BAD_PARAMETER);
  }
  // Read first: the caller may have given one object for both.
  std::vector<std::string> names;
  for (const Json::Value& element : groups) {
    names.push_back(JSON::AsString(element));
  }
  if (!JSON::IsObject(out)) {
    out = Json::Value(Json::objectValue);
  }
  for (const std::string& group : names) {
    std::string owner;
    if (!OwnerOfGroup(group, owner)) {
      return false;
    }
    const KEP::TaskMgr manager(owner.c_str());
    if (!manager.isOpen()) {
      return Fail(475, "Cannot get task manager", APIPolling::ERROR_UNAVAILABLE);
    }
    const Json::Value ids = manager.getAllTaskId(prefix.empty() ? nullptr : prefix.c_str());
    JSON::Set(out, group, ConverToFullTaskId(owner, ids));
  }
  return true;
}

}  // namespace ORBO
