// The handlers of the measured calls: one parameter and one small answer, and tasks
// that do next to nothing.

#include <webapi/APIDownload.h>
#include <webapi/APIPolling.h>
#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>
#include <webapi/APITable.h>

#include <chrono>
#include <fstream>
#include <string>

namespace {

using ORBO::APIPolling;
using ORBO::APIRequest;
using ORBO::APIResponse;

void Echo(APIRequest* request, APIResponse* response) {
  const auto text = request->GetAndCheckString("text", APIRequest::PARAM_OPTIONAL);
  Json::Value data(Json::objectValue);
  data["text"] = text.Get();
  response->SetSuccess(data);
}

void Finish(APIRequest*, APIResponse* response, void*) { response->SetSuccess(); }

void Start(APIRequest* request, APIResponse* response) {
  APIPolling(request).Start(response, Finish, nullptr);
}

void Status(APIRequest* request, APIResponse* response) {
  Json::Value status;
  if (APIPolling(request).Status(request->GetParam("task_id", "").asString(), status)) {
    response->SetSuccess(status);
  }
}

Json::Int64 NowInMicroseconds() {
  using std::chrono::duration_cast;
  return duration_cast<std::chrono::microseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

void Stamp(APIRequest*, APIResponse* response, void*) {
  Json::Value data(Json::objectValue);
  data["at"] = NowInMicroseconds();
  response->SetSuccess(data);
}

// How long after the task's first result its starter goes on.
void StartStamped(APIRequest* request, APIResponse* response) {
  APIPolling polling(request);
  Json::Value status;
  if (!polling.Start(response, Stamp, nullptr)) {
    return;
  }
  const Json::Int64 now = NowInMicroseconds();
  const std::string id = response->GetBody()["data"]["task_id"].asString();
  if (polling.Status(id, status) && status["data"]["at"].isInt64()) {
    Json::Value data(Json::objectValue);
    data["microseconds"] = now - status["data"]["at"].asInt64();
    response->SetSuccess(data);
  }
}

// Updates the record many times, and tells how long one of them took.
void Update(APIRequest*, APIResponse* response, void*) {
  constexpr int kUpdates = 2000;
  using Clock = std::chrono::steady_clock;
  const Clock::time_point begin = Clock::now();
  Json::Value data(Json::objectValue);
  for (int update = 0; update < kUpdates; ++update) {
    data["update"] = update;
    response->SetSuccess(data);
  }
  const std::chrono::duration<double, std::micro> elapsed = Clock::now() - begin;
  data["microseconds"] = elapsed.count() / kUpdates;
  response->SetSuccess(data);
}

void StartUpdates(APIRequest* request, APIResponse* response) {
  APIPolling(request).Start(response, Update, nullptr);
}

// The peak of this process's memory in KiB.
void Memory(APIRequest*, APIResponse* response) {
  Json::Value data(Json::objectValue);
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmHWM:", 0) == 0) {
      data["kibibytes"] = std::stoi(line.substr(6));
    }
  }
  response->SetSuccess(data);
}

// Answers with the file "path"; by send-file where the server
// offers it, unless "inline" is given.
void Fetch(APIRequest* request, APIResponse* response) {
  ORBO::APIDownload download(response);
  if (request->HasParam("inline")) {
    download.SetXSendFileDisabled();
  }
  download.Output(request->GetParam("path", "").asString());
}

ORBO::_tag_API_TABLE table[] = {
    {"ORBO.Small.Last", 1, "echo", Echo},
    {"ORBO.Large.Last", 1, "echo", Echo},
    {"ORBO.Login.Last", 1, "echo", Echo},
    {"ORBO.Login.Last", 1, "method1", Start},
    {"ORBO.Login.Last", 1, "method2", Status},
    {"ORBO.Login.Last", 1, "method3", StartUpdates},
    {"ORBO.Login.Last", 1, "method4", StartStamped},
    {"ORBO.Transfer", 1, "memory", Memory},
    {"ORBO.Transfer", 1, "upload", Memory},
    {"ORBO.Download", 1, "fetch", Fetch},
    {nullptr, 0, nullptr, nullptr},
};

}  // namespace

ORBO::_tag_API_TABLE* GetAPITable() { return table; }
