// Methods that show what reaches a handler, and handlers that misbehave.

#include <sys/resource.h>
#include <unistd.h>
#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>
#include <webapi/APITable.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>

namespace {

using ORBO::APIRequest;
using ORBO::APIResponse;

std::string TextParam(APIRequest* request, const std::string& name) {
  return request->GetAndCheckString(name, APIRequest::PARAM_OPTIONAL).Get("");
}

// The parameters other than those that name the call.
void Echo(APIRequest* request, APIResponse* response) {
  Json::Value data = request->GetParam("", Json::Value(Json::objectValue));
  for (const char* name : {"api", "version", "method"}) {
    data.removeMember(name);
  }
  response->SetSuccess(data);
}

void Size(APIRequest* request, APIResponse* response) {
  response->SetSuccess(static_cast<Json::UInt64>(TextParam(request, "v").size()));
}

void Facts(APIRequest* request, APIResponse* response) {
  Json::Value data(Json::objectValue);
  data["method"] = request->GetRequestMethod();
  data["proto"] = request->GetURLProto("none");
  data["host"] = request->GetURLHost("none");
  data["cookies"] =
      request->GetCookie("first", "none") + "," + request->GetCookie("second", "none");
  data["session"] = request->GetSessionID();
  response->SetSuccess(data);
}

// What the request and the process hold under names that the system trusts.
void Trusted(APIRequest* request, APIResponse* response) {
  Json::Value data(Json::objectValue);
  for (const char* name : {"task_id", "task_user", "full_task_id", "orbo_remoteIP",
                           "APPARMOR_HAT_ARRAY", "HTTP_PROXY", "orboAccessToken"}) {
    const char* variable = std::getenv(name);
    if (request->HasEnv(name) || variable != nullptr) {
      data["seen"].append(name);
    }
  }
  data["address"] = request->GetRemoteIP();
  data["task"] = request->IsPollingTask();
  response->SetSuccess(data);
}

void Nothing(APIRequest*, APIResponse*) {}

void Throws(APIRequest*, APIResponse* response) {
  response->SetHeader("X-Before", "kept");
  throw std::runtime_error("thrown on purpose");
}

void ThrowsNumber(APIRequest*, APIResponse*) { throw 42; }

void Noise(APIRequest*, APIResponse* response) {
  std::cout << "NOISE\r\n\r\nNOISE" << std::flush;
  std::string line;
  std::getline(std::cin, line);
  response->SetSuccess(line);
}

void Nice(APIRequest*, APIResponse* response) {
  response->SetSuccess(getpriority(PRIO_PROCESS, 0));
}

void Redirect(APIRequest* request, APIResponse* response) {
  response->SetSuccess(response->Redirect(TextParam(request, "path")));
}

void Header(APIRequest* request, APIResponse* response) {
  response->SetSuccess(
      response->SetHeader(TextParam(request, "name"), TextParam(request, "value")));
}

void Cookies(APIRequest* request, APIResponse* response) {
  response->AddCookie("/", "one", TextParam(request, "value"));
  response->AddCookie(TextParam(request, "path"), "two", "2");
  response->SetSuccess();
}

std::string marker;

void RunSlowly(void*) {
  sleep(3);
  std::ofstream(marker + ".runs", std::ios::app) << "run\n";
}

void Finish(void*) { std::ofstream(marker) << getsid(0) << " " << getpid() << "\n"; }

// Answers at once and leaves work behind.
void Later(APIRequest* request, APIResponse* response) {
  const char* root = std::getenv("WEBAPI_ROOT");
  marker = std::string(root == nullptr ? "" : root) + "/" + TextParam(request, "marker");
  response->SetCallbackFunc(RunSlowly, nullptr);
  response->SetCallbackFunc(RunSlowly, nullptr);
  response->SetCallbackFunc(Finish, nullptr);
  response->SetSuccess();
}

constexpr char kProbe[] = "ORBO.Test.Probe";

ORBO::_tag_API_TABLE methods[] = {
    {kProbe, 1, "echo", Echo},
    {kProbe, 1, "size", Size},
    {kProbe, 1, "facts", Facts},
    {kProbe, 1, "trusted", Trusted},
    {kProbe, 1, "nothing", Nothing},
    {kProbe, 1, "throws", Throws},
    {kProbe, 1, "throwsNumber", ThrowsNumber},
    {kProbe, 1, "noise", Noise},
    {kProbe, 1, "redirect", Redirect},
    {kProbe, 1, "header", Header},
    {kProbe, 1, "cookies", Cookies},
    {kProbe, 1, "later", Later},
    {kProbe, 1, "upload", Echo},
    {"ORBO.Test.Nice", 1, "nice", Nice},
    {"ORBO.Test.Closed", 1, "echo", Echo},
    {"ORBO.Test.Open", 1, "echo", Echo},
    {nullptr, 0, nullptr, nullptr},
};

}  // namespace

ORBO::_tag_API_TABLE* GetAPITable() { return methods; }
