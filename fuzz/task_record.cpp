// The record of a background task: whatever its file holds is a task that can be looked
// at, listed and stopped, or none.  Looking does not change the file.

#include <sys/stat.h>
#include <unistd.h>
#include <webapi/APIPolling.h>
#include <webapi/APIRequest.h>

#include <ctime>
#include <string>

#include "platform/linux/task_record.h"
#include "support/scratch.h"
#include "support/target.h"
#include "util/json_types.h"
#include "util/read_file.h"

namespace ORBO {
namespace {

constexpr char kFile[] = "/run/orbo/tasks/ada/1.json";
constexpr char kId[] = "ada/1";
constexpr uid_t kNobodysUser = 64321;

bool LayOut() {
  EnterScratchRoot();
  umask(077);
  WriteScratch(kFile, "");
  // Whatever process a record names is not this user's, and gets no signal.
  const std::string path = ScratchDirectory() + "/run/orbo/tasks/ada";
  Require(geteuid() != 0 || chown(path.c_str(), kNobodysUser, kNobodysUser) == 0);
  return true;
}

// "" where it is gone.
std::string FileText() {
  std::string text;
  ReadWholeFile(ScratchDirectory() + kFile, text);
  return text;
}

// What stopping does not change.
std::string Lasting(TaskRecord record) {
  record.finished = 0;
  record.auto_remove = false;
  return ToTaskText(record);
}

// The status of the task; null where there is none.
Json::Value StatusOf(APIPolling& polling) {
  Json::Value status;
  const bool is_task = polling.Status(kId, status);
  Require(is_task || (JSON::IsNull(status) && polling.GetError() == APIPolling::ERROR_NO_TASK));
  Require(!is_task || JSON::IsBool(JSON::At(status, "finish")));
  return status;
}

// Whether the task is listed.
bool IsListed(APIPolling& polling) {
  Json::Value groups(Json::arrayValue);
  Json::Value listed;
  groups.append("user");
  Require(polling.List("", groups, listed));
  const Json::Value& ids = listed["user"];
  Require(ids.empty() || (ids.size() == 1 && ids[0] == Json::Value(kId)));
  return !ids.empty();
}

void CheckStopped(APIPolling& polling, const TaskRecord& before, bool remove) {
  TaskRecord after;
  Require(FromTaskText(FileText(), after) && Lasting(after) == Lasting(before));
  Require(after.auto_remove == remove && after.finished != 0);
  Require(before.finished == 0 || after.finished == before.finished);
  Require(StatusOf(polling)["finish"] == Json::Value(true));
}

}  // namespace

void TestInput(FuzzInput input) {
  static const bool kReady = LayOut();
  const std::string text(input.TakeRest());
  WriteScratch(kFile, text);
  TaskRecord record;
  const bool is_record = FromTaskText(text, record);
  if (is_record) {
    Require(record.created > 0 && record.finished >= 0 && record.worker.pid >= 0);
    TaskRecord read;
    Require(FromTaskText(ToTaskText(record), read) && ToTaskText(read) == ToTaskText(record));
  }

  Json::Value session(Json::objectValue);
  session["session"]["username"] = "ada";
  APIRequest request(session);
  APIPolling polling(&request);
  const Json::Value status = StatusOf(polling);
  Require(kReady && JSON::IsNull(status) != is_record && FileText() == text);

  const bool is_expired = is_record && record.finished != 0 && record.auto_remove &&
                          std::time(nullptr) - record.finished >= TaskGrace();
  Require(IsListed(polling) == (is_record && !is_expired));
  Require(FileText() == (is_expired ? "" : text));
  const bool remove = text.size() % 2 == 0;
  const bool is_stopped = polling.Stop(kId, remove);
  Require(is_stopped == (is_record && !is_expired));
  if (is_stopped) {
    CheckStopped(polling, record, remove);
  } else {
    Require(polling.GetError() == APIPolling::ERROR_NO_TASK);
    Require(FileText() == (is_expired ? "" : text));
  }
}

}  // namespace ORBO
