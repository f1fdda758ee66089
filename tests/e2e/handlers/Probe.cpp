// Methods that show what reaches a handler, and handlers that misbehave.

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

std::string Variable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "unset" : value;
}

// The parameters other than those that name the call.
void Echo(APIRequest* request, APIResponse* response) {
  Json::Value data = request->GetParam("", Json::Value(Json::objectValue));
  for (const char* name : {"api", "version", "method"}) {
    data.removeMember(name);
  }
  response->SetSuccess(data);
}

void Facts(APIRequest* request, APIResponse* response) {
  Json::Value data(Json::objectValue);
  data["method"] = request->GetRequestMethod();
  data["url"] = request->GetURLProto("none") + "://" + request->GetURLHost("none");
  data["cookies"] = request->GetCookie("first", "none") + "," +
                    request->GetCookie("second", "none") + "," + request->GetSessionID();
  data["cookie_line"] = Variable("HTTP_COOKIE");
  data["token"] = Variable("orboAccessToken");
  response->SetSuccess(data);
}

// What the request and the process hold under names that the system trusts.
void Trusted(APIRequest* request, APIResponse* response) {
  Json::Value data(Json::objectValue);
  for (const char* name : {"task_id", "task_user", "full_task_id", "orbo_remoteIP",
                           "APPARMOR_HAT_ARRAY", "HTTP_PROXY", "orboAccessToken"}) {
    if (request->HasEnv(name) || std::getenv(name) != nullptr) {
      data["seen"].append(name);
    }
  }
  data["address"] = request->GetRemoteIP();
  data["task"] = request->IsPollingTask();
  response->SetSuccess(data);
}

void Throws(APIRequest*, APIResponse* response) {
  response->SetHeader("X-Before", "kept");
  throw std::runtime_error("thrown on purpose");
}

void Noise(APIRequest*, APIResponse* response) {
  std::cout << "NOISE\r\n\r\nNOISE" << std::flush;
  response->SetSuccess(std::cin.get());
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

void RunSlowly(void*) {
  sleep(3);
  std::ofstream(Variable("WEBAPI_ROOT") + "/finished", std::ios::app)
      << (getsid(0) == getpid() ? "in a session of its own\n" : "in the server's session\n");
}

// Answers at once and leaves work behind.
void Later(APIRequest*, APIResponse* response) {
  response->SetCallbackFunc(RunSlowly, nullptr);
  response->SetSuccess();
}

constexpr char kProbe[] = "ORBO.Test.Probe";

ORBO::_tag_API_TABLE methods[] = {
    {kProbe, 1, "echo", Echo},           {kProbe, 1, "facts", Facts},
    {kProbe, 1, "trusted", Trusted},     {kProbe, 1, "throws", Throws},
    {kProbe, 1, "noise", Noise},         {kProbe, 1, "redirect", Redirect},
    {kProbe, 1, "header", Header},       {kProbe, 1, "cookies", Cookies},
    {kProbe, 1, "later", Later},         {kProbe, 1, "upload", Echo},
    {"ORBO.Test.Open", 1, "echo", Echo}, {nullptr, 0, nullptr, nullptr},
};

}  // namespace

ORBO::_tag_API_TABLE* GetAPITable() { return methods; }
