#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <memory>
#include <new>
#include <utility>

#include "platform/process.h"
#include "platform/task.h"
#include "polling/APIPollingPrivate.h"
#include "polling/task_owners.h"
#include "request/APIRequestPrivate.h"
#include "util/error_codes.h"
#include "util/exception_text.h"
#include "util/json_types.h"
#include "util/log.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "APIPolling";
constexpr unsigned long kLongestWait = 60;  // seconds

// Ends the child.  Exit handlers are the parent's, and so is what its streams held
// at the fork, which the fork has flushed.
[[noreturn]] void EndChild() {
  try {
    std::cout.flush();
  } catch (...) {
  }
  std::fflush(nullptr);
  _exit(0);
}

// Whatever the host does with SIGTERM, it ends a task that does not handle it.
void RestoreSignals() {
  sigset_t stop;
  sigemptyset(&stop);
  sigaddset(&stop, SIGTERM);
  signal(SIGTERM, SIG_DFL);
  sigprocmask(SIG_UNBLOCK, &stop, nullptr);
}

// Marks the task finished, unless somebody has stopped it, whose choice then holds.
void Finish(KEP::Task& task) {
  const KEP::TaskUpdate update(task);
  if (update.hasBegun() && !task.isMarkedFinished()) {
    task.finish(task.getBoolProperty("auto_remove", false));
    task.endUpdate();
  }
}

// Whether the child has ended.  Its exit status is left for the caller.
bool HasEnded(pid_t child) {
  siginfo_t info{};
  const int flags = WEXITED | WNOHANG | WNOWAIT;
  return waitid(P_PID, static_cast<id_t>(child), &info, flags) == 0 ? info.si_pid != 0
                                                                    : errno == ECHILD;
}

// The child's whole life.  What cannot be caught ends the process, and with it the task:
// the caller's code must not run in two processes.
[[noreturn]] void RunTask(KEP::Task& task, const std::string& owner, APIRequest* request,
                          APIResponse* response, APIPollingPrivate::Function function,
                          void* argument) noexcept {
  setsid();
  APIPollingPrivate::BecomeTask(request, owner, task.getTaskId());
  RestoreSignals();
  // Who has stopped the task already found nobody to signal.
  if (!task.setCreatePid(getpid()) && task.reload() && task.isMarkedFinished()) {
    EndChild();
  }
  try {
    function(request, response, argument);
  } catch (...) {
    Log(LOG_ERR, "%s:%d task ended by an exception: %s", kSource, __LINE__,
        CurrentExceptionText().c_str());
    if (task.reload() && !task.hasProperty("task_run")) {
      response->SetError(kErrorNoResult);
    }
  }
  Finish(task);
  EndChild();
}

}  // namespace

void APIPollingPrivate::BecomeTask(APIRequest* request, const std::string& owner,
                                   const std::string& id) {
  Json::Value env(Json::objectValue);
  env["task_id"] = id;
  env["task_user"] = owner;
  env["full_task_id"] = owner + "/" + id;
  request->private_->ClearData("environ", "");
  request->private_->InitEnv(std::move(env));
}

bool APIPollingPrivate::OwnerOfNewTask(APIResponse* response, std::string& owner) {
  const std::string group =
      JSON::AsString(GetData("polling_attribute", "share_to_group", Json::Value("")));
  if (group.empty()) {
    owner = OwnerOfLogin();
    return true;
  }
  if (group == kAdminGroup && !request_->IsAdmin()) {
    response->SetError(kErrorNoPrivilege);
    return false;
  }
  if (group != kAdminGroup && group != kEveryoneGroup) {
    response->SetError(kErrorTaskGroup);
    return false;
  }
  owner = group == kAdminGroup ? kAdminOwner : kEveryoneOwner;
  return true;
}

Json::Value APIPollingPrivate::TaskInfo() {
  Json::Value info(Json::objectValue);
  info["api"] = request_->GetAPIClass();
  info["version"] = request_->GetAPIVersion();
  info["method"] = request_->GetAPIMethod();
  if (!JSON::AsBool(GetData("polling_attribute", "auto_remove_params", Json::Value(false)))) {
    Json::Value param = request_->GetParam("", Json::Value(Json::objectValue));
    // Nor what shows who calls: a task may be shared with people who must not know it.
    for (const char* name : {"api", "version", "method", "_sid", "tid"}) {
      JSON::Remove(param, name);
    }
    info["param"].swap(param);
  }
  info["group"] = GetData("polling_attribute", "share_to_group", Json::Value(""));
  info["prefix"] = GetData("polling_attribute", "task_id_prefix", Json::Value(""));
  return info;
}

bool APIPollingPrivate::Store(KEP::Task& task) {
  const KEP::TaskUpdate update(task);
  return update.hasBegun() && task.setProperty("info", TaskInfo()) &&
         task.setProperty("auto_remove",
                          GetData("polling_attribute", "auto_remove", Json::Value(true))) &&
         task.endUpdate();
}

bool APIPollingPrivate::Start(APIResponse* response, Function function, void* argument) {
  if (request_ == nullptr) {
    return Fail(163, "unknown request", APIPolling::ERROR_BAD_PARAMETER);
  }
  if (function == nullptr || response == nullptr) {
    return Fail(169, "bad parameters", APIPolling::ERROR_BAD_PARAMETER);
  }
  std::string owner;
  if (!OwnerOfNewTask(response, owner)) {
    return false;
  }
  const std::string prefix =
      JSON::AsString(GetData("polling_attribute", "task_id_prefix", Json::Value("")));
  const std::string id = KEP::TaskUtil::getUniqueID(owner.c_str(), prefix.c_str());
  const std::unique_ptr<KEP::Task> task(new (std::nothrow) KEP::Task(owner.c_str(), id.c_str()));
  if (task == nullptr || !task->isOpen()) {
    response->SetError(kErrorNoResult);
    return false;
  }
  if (!Store(*task)) {
    return Fail(219, "Failed to set property.", 0);
  }
  const pid_t child = QLIBCProcFork();
  if (child < 0) {
    const int error = errno;
    task->remove();
    Log(LOG_ERR, "%s:%d Failed to fork(). %s", kSource, 228, std::strerror(error));
    response->SetError(kErrorCompound);
    return false;
  }
  if (child == 0) {
    RunTask(*task, owner, request_, response, function, argument);
  }
  // Also done by the child, which may have to wait for other writers, and works on when
  // that takes too long.
  if (!task->setCreatePid(child) && HasEnded(child)) {
    // Killed before anybody knew its id, it would be waited for to the last.
    Finish(*task);
  }
  task->waitForDataReady("task_run", kLongestWait);
  Json::Value data(Json::objectValue);
  data["task_id"] = owner + "/" + task->getTaskId();
  response->SetSuccess(data);
  return true;
}

}  // namespace ORBO
