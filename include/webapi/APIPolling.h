#pragma once

#include <json/value.h>

#include <cstdint>
#include <memory>
#include <string>

#include <webapi/Export.h>

namespace ORBO {

class APIPollingPrivate;
class APIRequest;
class APIResponse;

// Background tasks: work that outlives the request that starts it.
//
// A handler starts a task and its client is answered at once with the task's id;
// the work goes on in a process of its own, and every result that it sets on its
// response goes into the task's record.  Handlers for "status", "stop" and "list"
// read the record by the id.
//
//   void Check(APIRequest* request, APIResponse* response) {
//     APIPolling polling(request);
//     polling.Start(response, Work, nullptr);   // answers {"task_id": ...}
//   }
//
// An id, here always a full one, is the owner, "/" and a short id.  The owner is the
// login user, or "@administrators" or "@users" for a task that is shared with those.
// A user sees the tasks of these owners alone, of administrators only as one.
//
// Failures are told by the result and by GetError.  Not thread-safe.
class WEBAPI_EXPORT APIPolling {
 public:
  // What GetError tells.
  enum Error : int {
    ERROR_NONE = 500,           // no failure so far
    ERROR_NOT_FINISHED = 501,   // the task could not be marked finished
    ERROR_BAD_PARAMETER = 502,  // no request, a bad argument, or a malformed id
    ERROR_NOT_ALLOWED = 503,    // an owner or a group whose tasks are not to be seen
    ERROR_UNAVAILABLE = 504,    // the record or the task manager cannot be opened
    ERROR_NOT_ADMIN = 505,      // for administrators only
    ERROR_NOT_STOPPED = 506,    // the task's process cannot be signalled
    ERROR_NO_TASK = 508,        // there is no such task
  };

  // Without a request nothing but the attributes can be used.
  APIPolling();
  // `request` tells who asks; not owned, must outlive this object.
  explicit APIPolling(APIRequest* request);
  ~APIPolling();

  // Not copyable: the private part points back to its object.
  APIPolling(const APIPolling&) = delete;
  APIPolling& operator=(const APIPolling&) = delete;

  void SetRequest(APIRequest* request);

  // --- Attributes of the task to be started ---

  // What its short id begins with; "" by default.
  bool SetPrefixAttr(const std::string& prefix);
  // Shares the task with "admin", the administrators (for those alone), or with
  // "everyone"; "" for the login user alone, the default.
  bool SetGroupAttr(const std::string& group);
  // Whether the record goes some time after the end; true by default.
  bool SetRemoveAttr(bool auto_remove);
  // Whether the request's parameters are left out of the record; false by default.
  // Set it where they hold secrets: whoever sees the task sees them, but for the
  // credentials "_sid" and "tid", which the record never holds.
  bool SetRemoveParam(bool auto_remove_params);

  // --- Starting ---

  // Runs `function(request, response, argument)` in a process of its own, which ends
  // when it returns.  There the request is a task (IsPollingTask) without CGI variables,
  // every SetSuccess and SetError of the response is written into the record, the
  // standard streams are /dev/null, SIGTERM has its default action, and neither guards
  // nor exit handlers of the caller run.  A caller that lives on has to wait(2) for it.
  //
  // Returns in the calling process alone: true once the work has set its first
  // result, has ended, or 60 seconds are over, with the answer {"task_id": id} set
  // on `response`.  False on a failure, with error 105 (not an administrator), 114
  // (unknown group), 117 (no record could be made) or 110 (no process) on the
  // response, or with ERROR_BAD_PARAMETER or nothing but a line in the system log.
  bool Start(APIResponse* response, void (*function)(APIRequest*, APIResponse*, void*),
             void* argument);

  // --- The task's log: lines for people, of a bounded size (256 KiB) ---

  // In the work: adds `text`, which is to end with a line end, to the log of the task
  // that the request is.  When the log is full its older half goes.  False, with the
  // error set, if the request is no task (ERROR_BAD_PARAMETER) or the text cannot be
  // stored (ERROR_UNAVAILABLE).
  bool WriteLog(const std::string& text);
  // Reads the log from `offset` on, in bytes since its beginning, into an object:
  // "text", "offset" (where that begins, later than asked for if the older part has
  // gone), "next" (the offset to go on with) and "finish".  Failures as for Status.
  bool ReadLog(const std::string& full_id, std::uint64_t offset, Json::Value& out);

  // --- Looking and stopping ---

  // The last body that the task has set, with the members "finish" (whether it is
  // over), "auto_remove" and "info" (api, version, method, param, group, prefix).
  bool Status(const std::string& full_id, Json::Value& out);
  bool Status(const char* full_id, Json::Value& out);
  // The same for an array of ids, into an object by id.  An id that names no task gets
  // an empty object, one that may not be seen nothing.
  bool Status(const Json::Value& full_ids, Json::Value& out);
  // Sends SIGTERM to the task's process and marks the task finished.  With `remove`
  // the record goes some time later.  A process that is gone is no failure, and no
  // other process that has got its id is ever signalled.
  bool Stop(const std::string& full_id, bool remove);
  // The ids of the tasks of each group in the array `groups` ("user", "everyone",
  // "admin") whose short ids begin with `prefix`, into an object by group.
  bool List(const std::string& prefix, const Json::Value& groups, Json::Value& out);

  // The last failure; ERROR_NONE until there is one.  A later success does
  // not reset it.
  void SetError(int error);
  int GetError();

 private:
  std::unique_ptr<APIPollingPrivate> private_;
};

}  // namespace ORBO
