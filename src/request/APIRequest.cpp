#include <webapi/APIRequest.h>

#include <cstdlib>

#include "platform/users.h"
#include "request/APIRequestPrivate.h"
#include "util/json_types.h"

namespace ORBO {
namespace {

constexpr int kPathBufferSize = 1024;
constexpr char kFallbackDirectory[] = "/tmp";

// Asks the platform for a preference directory by `get`.
std::string PreferenceDirectory(int (*get)(const char*, char*, int), const std::string& name) {
  char path[kPathBufferSize] = {};
  return get(name.c_str(), path, kPathBufferSize) < 0 ? kFallbackDirectory : path;
}

}  // namespace

APIRequest::APIRequest(const Json::Value& request)
    : private_(std::make_unique<APIRequestPrivate>(this)) {
  private_->Init(request);
}

APIRequest::~APIRequest() = default;

void APIRequest::InitEnv(const Json::Value& env) { private_->InitEnv(env); }

void APIRequest::InitParam(const Json::Value& request, bool reset) {
  private_->InitParam(request, reset);
}

void APIRequest::InitAPIInfo(const Json::Value& info) { private_->InitAPIInfo(info); }

void APIRequest::InitSession(const Json::Value& session) { private_->InitSession(session); }

bool APIRequest::HasEnv(const std::string& name) { return private_->HasData("environ", name); }

Json::Value APIRequest::GetEnv(const std::string& name, const Json::Value& fallback) {
  return private_->GetData("environ", name, fallback);
}

bool APIRequest::HasParam(const std::string& name) { return private_->HasData("param", name); }

Json::Value APIRequest::GetParam(const std::string& name, const Json::Value& fallback) {
  return private_->GetData("param", name, fallback);
}

const Json::Value& APIRequest::GetParamRef(const std::string& name, const Json::Value& fallback) {
  return private_->GetData("param", name, fallback);
}

bool APIRequest::HasCookie(const std::string& name) { return private_->HasData("cookie", name); }

std::string APIRequest::GetCookie(const std::string& name, const std::string& fallback) {
  const Json::Value& cookie = private_->GetData("cookie", name, Json::Value::nullSingleton());
  return JSON::IsString(cookie) ? JSON::AsString(cookie) : fallback;
}

bool APIRequest::SetCookie(const std::string& name, const std::string& value) {
  return private_->SetData("cookie", name, Json::Value(value), true);
}

std::string APIRequest::GetSessionID() { return GetCookie("id", ""); }

bool APIRequest::HasAttr(const std::string& name) { return private_->HasData("attr", name); }

Json::Value APIRequest::GetAttr(const std::string& name, const Json::Value& fallback) {
  return private_->GetData("attr", name, fallback);
}

void APIRequest::SetAttr(const std::string& name, const Json::Value& value) {
  private_->SetData("attr", name, value, false);
}

Json::Value APIRequest::GetAPIInfo(const std::string& name, const Json::Value& fallback) {
  return private_->GetData("reqLib", name, fallback);
}

std::string APIRequest::GetAPIClass() { return private_->api(); }

int APIRequest::GetAPIVersion() { return private_->version(); }

std::string APIRequest::GetAPIMethod() { return private_->method(); }

int APIRequest::GetRequestMethod() { return private_->request_method(); }

std::string APIRequest::GetURLProto(const std::string& fallback) {
  private_->InitURL();
  return private_->GetText("url", "urlProto", fallback);
}

std::string APIRequest::GetURLHost(const std::string& fallback) {
  private_->InitURL();
  return private_->GetText("url", "urlHost", fallback);
}

int APIRequest::GetURLPort(int fallback) {
  private_->InitURL();
  return JSON::AsInt(private_->GetData("url", "urlPort", Json::Value(fallback)));
}

std::string APIRequest::GetURLPath(const std::string& fallback) {
  private_->InitURL();
  return private_->GetText("url", "urlPath", fallback);
}

std::string APIRequest::GetURLName(const std::string& fallback) {
  private_->InitURL();
  return private_->GetText("url", "urlName", fallback);
}

uid_t APIRequest::GetLoginUID() { return private_->GetLoginUID(); }

std::string APIRequest::GetLoginUserName() { return private_->GetText("session", "username", ""); }

bool APIRequest::IsAdmin() { return private_->GetFlag("session", "isAdmin", false); }

bool APIRequest::IsSkipCheckIP() { return private_->GetFlag("session", "isSkipCheckIP", true); }

bool APIRequest::IsTimeout() { return private_->GetFlag("session", "isTimeout", true); }

int APIRequest::GetTimeoutDuration() {
  return JSON::AsInt(private_->GetData("session", "timeout", Json::Value(0)));
}

bool APIRequest::IsAuthorized() { return private_->GetFlag("session", "isAuthorized", false); }

std::string APIRequest::GetApplication() { return private_->GetText("session", "app", ""); }

std::string APIRequest::GetWebAPIPriv() { return private_->GetText("session", "webapi", ""); }

bool APIRequest::HasAppPriv(const std::string& app) {
  return private_->GetData("session", "appPriv", Json::Value("")) == Json::Value(app);
}

std::string APIRequest::GetSessionFilePath() {
  return private_->GetText("session", "sessFile", "");
}

std::string APIRequest::GetUILanguage() { return private_->GetText("session", "uiLang", "enu"); }

int APIRequest::GetAllowUser() { return private_->GetAllowUser(); }

const char* APIRequest::GetOrboAccessTokenID() { return std::getenv("orboAccessToken"); }

std::string APIRequest::GetRemoteIP() { return private_->GetRemoteIP(); }

std::string APIRequest::GetPreferenceDir() {
  return PreferenceDirectory(&ORBOUserPreferenceDirGet, GetLoginUserName());
}

std::string APIRequest::GetGroupPreferenceDir(const std::string& group) {
  return PreferenceDirectory(&ORBOGroupPreferenceDirGet, group);
}

bool APIRequest::IsDemoMode() { return false; }

bool APIRequest::IsPollingTask() {
  return private_->HasData("environ", "task_id") && private_->HasData("environ", "task_user");
}

std::string APIRequest::GetPollingTaskId() {
  return private_->GetText("environ", "full_task_id", "");
}

bool APIRequest::IsUploadRequest() { return private_->IsUploadRequest(); }

bool APIRequest::IsSliceUploadRequest() { return private_->IsSliceUploadRequest(); }

}  // namespace ORBO
