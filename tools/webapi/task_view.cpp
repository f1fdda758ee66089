#include "task_view.h"

#include <webapi/APIPolling.h>
#include <webapi/APIRequest.h>

#include <cerrno>

#include "output.h"
#include "platform/linux/private_file.h"
#include "platform/linux/task_path.h"
#include "platform/task.h"
#include "util/json_types.h"

namespace ORBO::tool {
namespace {

// The owner in a full id.
std::string OwnerOf(const std::string& full_id) { return full_id.substr(0, full_id.find('/')); }

// A request as the owner of the task makes it.
Json::Value RequestOf(const std::string& owner) {
  Json::Value options(Json::objectValue);
  options["session"]["username"] = owner;
  options["session"]["isAdmin"] = true;
  return options;
}

bool ComplainOfTask(const std::string& full_id, int error) {
  Complain(error == APIPolling::ERROR_NO_TASK || error == APIPolling::ERROR_NOT_ALLOWED ||
                   error == APIPolling::ERROR_BAD_PARAMETER
               ? "no such task: " + full_id
               : "cannot use the task " + full_id + "; the system log has the reason");
  return false;
}

}  // namespace

bool MayReadTasks() { return MayRead(TaskRootDirectory(), "read the tasks"); }

std::vector<std::string> TaskIds(const std::string& owner) {
  std::vector<std::string> owners = {owner};
  if (owner.empty()) {
    owners.clear();
    for (const std::string& directory : PrivateFileNames(TaskRootDirectory())) {
      owners.push_back(TaskOwnerOfDirectory(directory));
    }
  }
  std::vector<std::string> ids;
  for (const std::string& name : owners) {
    for (const Json::Value& id : KEP::TaskMgr(name.c_str()).getAllTaskId(nullptr)) {
      ids.push_back(name + "/" + JSON::AsString(id));
    }
  }
  return ids;
}

bool LoadTask(const std::string& full_id, Json::Value& status) {
  APIRequest request(RequestOf(OwnerOf(full_id)));
  APIPolling polling(&request);
  return polling.Status(full_id, status) || ComplainOfTask(full_id, polling.GetError());
}

bool StopTask(const std::string& full_id, bool remove) {
  APIRequest request(RequestOf(OwnerOf(full_id)));
  APIPolling polling(&request);
  return polling.Stop(full_id, remove) || ComplainOfTask(full_id, polling.GetError());
}

std::string TaskState(const Json::Value& status) {
  if (!JSON::AsBool(JSON::At(status, "finish"))) {
    return "running";
  }
  if (!JSON::AsBool(JSON::At(status, "success"))) {
    return "failed";
  }
  const Json::Value& progress = TaskProgress(status);
  const bool is_complete =
      JSON::IsEmpty(progress) || JSON::AsDouble(JSON::At(progress, "percent")) >= 100;
  return is_complete ? "done" : "stopped";
}

const Json::Value& TaskProgress(const Json::Value& status) {
  static const Json::Value kNone(Json::objectValue);
  return JSON::At(JSON::At(status, "data"), "progress", kNone);
}

std::string PercentText(const Json::Value& progress) {
  const Json::Value* const percent = JSON::Find(progress, "percent");
  return percent == nullptr ? "" : std::to_string(JSON::AsInt(*percent)) + " %";
}

}  // namespace ORBO::tool
