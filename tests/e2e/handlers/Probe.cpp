// Methods that show what reaches a handler, and handlers that misbehave.

#include <sys/stat.h>
#include <unistd.h>
#include <webapi/APIAuth.h>
#include <webapi/APIDownload.h>
#include <webapi/APIPolling.h>
#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>
#include <webapi/APITable.h>
#include <webapi/APIUpload.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

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

// How the process was started, and what of the request is in its environment.
void Start(APIRequest*, APIResponse* response) {
  sigset_t blocked;
  sigprocmask(SIG_BLOCK, nullptr, &blocked);
  Json::Value data(Json::arrayValue);
  data.append(static_cast<int>(umask(0)));
  data.append(sigismember(&blocked, SIGTERM));
  data.append(Variable("QUERY_STRING"));
  data.append(Variable("CONTENT_TYPE"));
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

// Who calls, as handlers see it.
void Who(APIRequest* request, APIResponse* response) {
  Json::Value data(Json::objectValue);
  data["user"] = request->GetLoginUserName();
  data["uid"] = request->GetLoginUID();
  data["admin"] = request->IsAdmin();
  data["authorized"] = request->IsAuthorized();
  data["timeout"] = request->GetTimeoutDuration();
  data["timed_out"] = request->IsTimeout();
  data["any_address"] = request->IsSkipCheckIP();
  data["language"] = request->GetUILanguage();
  data["application"] = request->GetApplication();
  data["file"] = request->GetSessionFilePath();
  data["classes"] = request->GetAllowUser();
  data["privileged"] = request->HasAppPriv("ORBO.Test");
  data["variable"] = Variable("ORBO_WEBAPI_USERNAME");
  response->SetSuccess(data);
}

// A check of the session that "other" names, by the handler itself.
void Own(APIRequest* request, APIResponse* response) {
  const std::string other = TextParam(request, "other");
  response->SetSuccess();
  ORBO::APIAuth::CheckPermission(request, response,
                                 request->HasParam("other") ? other.c_str() : nullptr, false);
}

void Touch(APIRequest* request, APIResponse* response) {
  response->SetSuccess(ORBO::APIAuth::UpdateTimeout(request));
}

// Lasts until the file "go" is in the root directory, or that is being removed.
void WaitForGo(APIRequest* request, APIResponse* response, void*) {
  const std::string root = Variable("WEBAPI_ROOT");
  Json::Value data(Json::objectValue);
  data["pid"] = getpid();
  ORBO::APIPolling(request).WriteLog("waiting\n");
  response->SetSuccess(data);
  while (access((root + "/go").c_str(), F_OK) != 0 && access((root + "/usr").c_str(), F_OK) == 0) {
    usleep(5000);
  }
  data["over"] = true;
  response->SetSuccess(data);
}

// The example's other methods look at the task.
void Work(APIRequest* request, APIResponse* response) {
  ORBO::APIPolling polling(request);
  polling.SetPrefixAttr("checksum_");
  polling.Start(response, WaitForGo, nullptr);
}

// The parameters as a handler may trust them: stored files by their content.
Json::Value Received(const Json::Value& params) {
  Json::Value data(Json::objectValue);
  for (const std::string& name : params.getMemberNames()) {
    const std::string text = params[name].asString();
    if (!ORBO::APIUpload::IsStoredFile(text)) {
      data[name] = text;
      continue;
    }
    std::ostringstream content;
    content << std::ifstream(text, std::ios::binary).rdbuf();
    data[name] = "file " + content.str();
  }
  return data;
}

// The peak of this process's memory in KiB.
long PeakMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmHWM:", 0) == 0) {
      return std::strtol(line.c_str() + 6, nullptr, 10);
    }
  }
  return -1;
}

void Upload(APIRequest* request, APIResponse* response) {
  if (TextParam(request, "crash") != "") {
    raise(TextParam(request, "crash") == "killed" ? SIGKILL : SIGABRT);
  }
  Json::Value data = Received(request->GetParam("", Json::Value(Json::objectValue)));
  data["call"] = request->GetAPIClass() + "." + request->GetAPIMethod();
  response->SetSuccess(data);
}

void Leave(APIRequest*, APIResponse* response) {
  response->SetSuccess();
  std::exit(0);
}

void Hang(APIRequest*, APIResponse*) { pause(); }

// Takes an upload apart itself, in as many steps as it has files.
void Deferred(APIRequest* request, APIResponse* response) {
  ORBO::APIUpload upload(request);
  Json::Value steps(Json::arrayValue);
  Json::Value params(Json::objectValue);
  if (TextParam(request, "interrupt") != "") {
    upload.SetUploadCallback([](unsigned long long, unsigned long long) { throw 5; });
    steps.append(upload.GetUploadAll(params, nullptr));
  }
  int result = upload.GetUploadFile(params);
  if (TextParam(request, "all") != "") {
    result = upload.GetUploadAll(params, nullptr);
  } else if (result == -8) {
    result = upload.GetUploadParam(params);
    for (; result == 1; result = upload.GetUploadFile(params)) {
      steps.append(Received(params));
    }
  }
  Json::Value data = Received(params);
  data["steps"] = steps;
  data["result"] = result;
  response->SetSuccess(data);
}

// Files of any size are a handler's business on 32-bit systems too.
static_assert(sizeof(off_t) == 8);

// One file of any size.
void Large(APIRequest* request, APIResponse* response) {
  const std::string path = TextParam(request, "file");
  struct stat status = {};
  Json::Value data(Json::objectValue);
  data["stored"] = ORBO::APIUpload::IsStoredFile(path) && stat(path.c_str(), &status) == 0;
  data["size"] = static_cast<Json::Int64>(status.st_size);
  data["small"] = PeakMemory() < 16 * 1024;
  response->SetSuccess(data);
}

// Answers with the file "path", or tells the failure.
void Download(APIRequest* request, APIResponse* response) {
  ORBO::APIDownload download(response);
  if (request->HasParam("inline")) {
    download.SetXSendFileDisabled();
  }
  download.SetAttachment(TextParam(request, "name"));
  const int result = download.Output(TextParam(request, "path"));
  if (result < 0) {
    response->SetError(1000, result);
  }
}

constexpr char kProbe[] = "ORBO.Test.Probe";
constexpr char kPermission[] = "ORBO.Test.Permission";
constexpr char kFree[] = "ORBO.Test.Permission.Free";
constexpr char kPrivileged[] = "ORBO.Test.Permission.Privileged";

std::vector<ORBO::_tag_API_TABLE> Methods() {
  std::vector<ORBO::_tag_API_TABLE> rows = {
      {kProbe, 1, "echo", Echo},         {kProbe, 1, "trusted", Trusted},
      {kProbe, 1, "throws", Throws},     {kProbe, 1, "noise", Noise},
      {kProbe, 1, "redirect", Redirect}, {kProbe, 1, "header", Header},
      {kProbe, 1, "cookies", Cookies},   {kProbe, 1, "later", Later},
      {kProbe, 1, "upload", Upload},     {kProbe, 1, "large", Large},
      {kProbe, 1, "deferred", Deferred}, {"ORBO.Test.Open", 1, "echo", Echo},
      {kProbe, 1, "download", Download}, {kProbe, 1, "closed", Download},
      {kFree, 1, "touch", Touch},        {kPermission, 1, "work", Work},
      {kProbe, 1, "leave", Leave},       {kProbe, 1, "hang", Hang},
      {kProbe, 1, "start", Start},
  };
  for (const char* method : {"who", "idle", "admin.local", "admin.domain", "admin.ldap",
                             "normal.local", "normal.domain", "normal.ldap"}) {
    rows.push_back({kPermission, 1, method, Who});
  }
  for (const char* api :
       {kFree, kPrivileged, "ORBO.Test.Permission.Open", "ORBO.Test.Permission.admin.local",
        "ORBO.Test.Permission.admin.domain", "ORBO.Test.Permission.admin.ldap",
        "ORBO.Test.Permission.normal.local", "ORBO.Test.Permission.normal.domain",
        "ORBO.Test.Permission.normal.ldap"}) {
    rows.push_back({api, 1, "who", Who});
  }
  for (const char* api : {kPermission, kPrivileged, "ORBO.Test.Permission.Admins"}) {
    rows.push_back({api, 1, "own", Own});
  }
  rows.push_back({nullptr, 0, nullptr, nullptr});
  return rows;
}

}  // namespace

ORBO::_tag_API_TABLE* GetAPITable() {
  static std::vector<ORBO::_tag_API_TABLE> methods = Methods();
  return methods.data();
}
// No checks, in the other way to say so than to leave the function out.
ORBO::_tag_API_CHECK_TABLE* GetAPICheckTable() { return nullptr; }
