#pragma once

#include <json/value.h>

#include <cstdint>
#include <string>

#include <webapi/APIBase.h>
#include <webapi/APIPolling.h>

namespace KEP {
class Task;
}

namespace ORBO {

// The state and the rules of APIPolling.
//
// The one section is "polling_attribute": "task_id_prefix", "share_to_group",
// "auto_remove" and "auto_remove_params", each where it was set.
class APIPollingPrivate : public APIBase {
 public:
  using Function = void (*)(APIRequest*, APIResponse*, void*);

  APIPollingPrivate(APIRequest* request, APIPolling* owner);

  void SetRequest(APIRequest* request) { request_ = request; }
  void SetError(int error) { error_ = error; }
  int GetError() const { return error_; }

  bool SetGroupAttr(const std::string& group);
  bool Start(APIResponse* response, Function function, void* argument);
  bool Status(const std::string& full_id, Json::Value& out);
  bool Status(const Json::Value& full_ids, Json::Value& out);
  bool WriteLog(const std::string& text);
  bool ReadLog(const std::string& full_id, std::uint64_t offset, Json::Value& out);
  bool Stop(const std::string& full_id, bool remove);
  bool List(const std::string& prefix, const Json::Value& groups, Json::Value& out);

  // Splits `full` at its first "/"; false, and nothing set, if there is none.
  bool GetUserAndTaskID(const std::string& full, std::string& user, std::string& id);
  // Whether the login user may see the tasks of `owner`.
  bool CheckTaskUser(const std::string& owner);
  // `ids`, a text, an object or an array of short ids, as full ones in the same
  // shape; null for an empty owner, empty `ids` and any other type.
  Json::Value ConverToFullTaskId(const std::string& owner, const Json::Value& ids);
  // Makes `request` that of the task `id`.  Nothing of the CGI environment is left, or the
  // task would look for what the client has sent.
  static void BecomeTask(APIRequest* request, const std::string& owner, const std::string& id);
  // Sends SIGTERM; a process that is gone is fine.
  bool DoKill(int pid);

 private:
  // Logs `message`, a literal, under its prescribed line, sets the error unless it is 0, and
  // gives false.
  bool Fail(int line, const char* message, int error);
  // Splits `full_id` and checks its owner.
  bool ReadId(const std::string& full_id, std::string& owner, std::string& id);
  // The same for a task that has to be there, with the failures of Status.
  bool FindTask(const std::string& full_id, std::string& owner, std::string& id);

  // The owner of the login user's own tasks; "" where that cannot be one.
  std::string OwnerOfLogin();
  // Whether `error`, of a try to signal the process `pid`, is none or that it is gone.
  bool IsKilled(int pid, int error);
  bool OwnerOfNewTask(APIResponse* response, std::string& owner);
  // The owner of the tasks of `group` in a list; false, with the error set.
  bool OwnerOfGroup(const std::string& group, std::string& owner);
  Json::Value TaskInfo();
  bool Store(KEP::Task& task);

  APIPolling* owner_;    // not owned
  APIRequest* request_;  // not owned; may be null
  int error_ = APIPolling::ERROR_NONE;
};

}  // namespace ORBO
