// A checksum of a large tree as a background task: progress, a log, a result, and the
// methods by which a client looks at it and stops it.

#include <webapi/APIPolling.h>
#include <webapi/APIProgress.h>
#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>
#include <webapi/APITable.h>

#include <string>

#include "tree_checksum.h"

namespace {

using ORBO::APIPolling;
using ORBO::APIRequest;
using ORBO::APIResponse;

constexpr int kErrorBadParameter = 1001;
constexpr int kErrorNoTask = 1002;
constexpr int kErrorUnreadable = 1003;

// What anybody may read.
constexpr char kTop[] = "/usr/share";

void RefuseParameter(APIResponse* response, const char* name) {
  Json::Value errors(Json::objectValue);
  errors["parameter"] = name;
  response->SetError(kErrorBadParameter, errors);
}

bool IsNotEmpty(const std::string& text) { return !text.empty(); }

// The work, in a process of its own.
void Work(APIRequest* request, APIResponse* response, void*) {
  const std::string directory =
      example::ResolveBelow(kTop, request->GetParam("path", "").asString());
  ORBO::APIProgress progress(response, 0);
  progress.Update(0, "looking for files");
  APIPolling task(request);
  const std::vector<example::File> files = example::ListFiles(directory);
  progress.SetTotal(example::TotalSize(files));
  example::Checksum sum;
  for (const example::File& file : files) {
    const bool is_read = example::AddFile(
        file.path, sum, [&](std::uint64_t done) { progress.Update(done, file.path); });
    task.WriteLog(file.path + (is_read ? "\n" : ": cannot be read\n"));
  }
  Json::Value result(Json::objectValue);
  result["files"] = static_cast<Json::UInt64>(files.size());
  result["bytes"] = static_cast<Json::UInt64>(sum.bytes);
  result["checksum"] = example::ToHex(sum.value);
  progress.Finish(result);
}

// ORBO.Example.Checksum 1 start: path, relative to /usr/share.
void Start(APIRequest* request, APIResponse* response) {
  auto path = request->GetAndCheckString("path", APIRequest::PARAM_REQUIRED, IsNotEmpty);
  if (path.IsInvalid() || path.IsReset() || example::ResolveBelow(kTop, path.Get()).empty()) {
    RefuseParameter(response, "path");
    return;
  }
  APIPolling polling(request);
  polling.SetPrefixAttr("checksum_");
  // The answer, or the error, is set by Start.
  polling.Start(response, Work, nullptr);
}

// Reads the parameter "task_id"; "" with the error set if it is missing.
std::string TaskId(APIRequest* request, APIResponse* response) {
  auto id = request->GetAndCheckString("task_id", APIRequest::PARAM_REQUIRED, IsNotEmpty);
  if (id.IsInvalid() || id.IsReset()) {
    RefuseParameter(response, "task_id");
    return "";
  }
  return id.Get();
}

// ORBO.Example.Checksum 1 status: how far the task is, or its result.
void Status(APIRequest* request, APIResponse* response) {
  const std::string id = TaskId(request, response);
  Json::Value status;
  if (id.empty()) {
    return;
  }
  APIPolling polling(request);
  if (polling.Status(id, status)) {
    response->SetSuccess(status);
  } else {
    response->SetError(kErrorNoTask);
  }
}

// ORBO.Example.Checksum 1 stop: the record goes after a while.
void Stop(APIRequest* request, APIResponse* response) {
  const std::string id = TaskId(request, response);
  if (id.empty()) {
    return;
  }
  APIPolling polling(request);
  if (polling.Stop(id, true)) {
    response->SetSuccess();
  } else {
    response->SetError(kErrorNoTask);
  }
}

// ORBO.Example.Checksum 1 list: the caller's tasks.
void List(APIRequest* request, APIResponse* response) {
  Json::Value groups(Json::arrayValue);
  groups.append("user");
  Json::Value ids;
  APIPolling polling(request);
  if (!polling.List("checksum_", groups, ids)) {
    response->SetError(kErrorUnreadable);
    return;
  }
  Json::Value data(Json::objectValue);
  data["tasks"] = ids["user"];
  response->SetSuccess(data);
}

// ORBO.Example.Checksum 1 log: the files done so far, from "offset" on.
void Log(APIRequest* request, APIResponse* response) {
  const std::string id = TaskId(request, response);
  auto offset =
      request->GetAndCheckIntegral<unsigned long long>("offset", APIRequest::PARAM_OPTIONAL);
  Json::Value log;
  if (id.empty()) {
    return;
  }
  if (offset.IsInvalid()) {
    RefuseParameter(response, "offset");
    return;
  }
  APIPolling polling(request);
  if (polling.ReadLog(id, offset.Get(0), log)) {
    response->SetSuccess(log);
  } else {
    response->SetError(kErrorNoTask);
  }
}

constexpr char kAPI[] = "ORBO.Example.Checksum";

ORBO::_tag_API_TABLE methods[] = {
    {kAPI, 1, "start", Start}, {kAPI, 1, "status", Status}, {kAPI, 1, "stop", Stop},
    {kAPI, 1, "list", List},   {kAPI, 1, "log", Log},       {nullptr, 0, nullptr, nullptr},
};

}  // namespace

ORBO::_tag_API_TABLE* GetAPITable() { return methods; }
