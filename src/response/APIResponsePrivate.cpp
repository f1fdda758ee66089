#include "response/APIResponsePrivate.h"

#include <algorithm>
#include <ctime>
#include <stdexcept>

#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>

#include "platform/task.h"
#include "response/set_cookie.h"
#include "util/error_codes.h"
#include "util/json_types.h"
#include "util/log.h"
#include "util/log_text.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "APIResponse";
constexpr int kCookieNameLine = 84;  // prescribed for this message

// Whether `text`, a path or a domain, ends its attribute and no other begins.
bool IsAttributeValue(const std::string& text) {
  return std::none_of(text.begin(), text.end(),
                      [](unsigned char c) { return c < 0x20 || c == 0x7f || c == ';'; });
}

Json::Value MakeBody(int code, const Json::Value& errors) {
  Json::Value body(Json::objectValue);
  body["success"] = code == 0;
  if (code == 0) {
    if (!JSON::IsNull(errors)) {
      body["data"] = errors;
    }
  } else {
    Json::Value& error = body["error"];
    error["code"] = code;
    if (!JSON::IsNull(errors)) {
      error["errors"] = errors;
    }
  }
  return body;
}

// Makes `body` the task's result.  Also true where no update can begin, most times since
// the record has been removed: there is nothing to do then.
bool StoreBody(KEP::Task& task, const Json::Value& body) {
  const KEP::TaskUpdate update(task);
  return !update.hasBegun() ||
         (task.setProperty("body", body) && task.setProperty("task_run", true) && task.endUpdate());
}

}  // namespace

APIResponsePrivate::APIResponsePrivate(APIRequest* request, APIResponse* owner)
    : request_(request), owner_(owner) {
  root_["headers"] = Json::Value(Json::objectValue);
  root_["setCookie"] = Json::Value(Json::arrayValue);
  root_["success"] = Json::Value(Json::objectValue);
  root_["option"] = Json::Value(Json::objectValue);
}

APIResponsePrivate::~APIResponsePrivate() = default;

void APIResponsePrivate::BindTask() {
  if (request_ == nullptr || !request_->IsPollingTask()) {
    return;
  }
  const std::string user = JSON::AsString(request_->GetEnv("task_user", Json::Value()));
  const std::string id = JSON::AsString(request_->GetEnv("task_id", Json::Value()));
  std::string name = user + "/" + id;
  if (task_ != nullptr && name == task_name_) {
    return;
  }
  // What a task starts is another task, with a record of its own.
  task_.reset();
  task_name_.swap(name);
  // A task that was stopped and removed while it went on gets no new record.
  if (KEP::TaskUtil::checkTaskExists(user.c_str(), id.c_str())) {
    task_ = std::make_unique<KEP::Task>(user.c_str(), id.c_str());
  }
}

void APIResponsePrivate::WriteToTask() {
  if (task_ == nullptr || StoreBody(*task_, Body())) {
    return;
  }
  Log(LOG_ERR, "%s:%d result cannot be stored: it is too large, too deep or there is no space",
      kSource, __LINE__);
  // The starter waits for a result, and an older one must not pass for this.
  StoreBody(*task_, MakeBody(kErrorNoResult, Json::Value()));
}

void APIResponsePrivate::SetError(int code, const Json::Value& errors) {
  BindTask();
  error_ = code;
  root_["body"] = MakeBody(code, errors);
  WriteToTask();
}

const Json::Value& APIResponsePrivate::Body() {
  static const Json::Value kNoBody(Json::objectValue);
  return GetData("body", "", kNoBody);
}

Json::Value APIResponsePrivate::TakeBody() {
  Json::Value body(Json::objectValue);
  if (Json::Value* const stored = JSON::Find(root_, "body")) {
    body.swap(*stored);
  }
  return body;
}

void APIResponsePrivate::ClearResult() {
  error_ = 0;
  JSON::Remove(root_, "body");
  callbacks_.clear();
}

bool APIResponsePrivate::AddCookie(const std::string& name, const std::string& value,
                                   const std::string& path, long expire_minutes,
                                   const std::string& domain, bool secure, bool http_only) {
  return AppendCookie(
      {name, value, path, domain, expire_minutes, secure, http_only, APICookie::SameSite::kUnset});
}

bool APIResponsePrivate::AddCookie(const APICookie& cookie) {
  return IsAttributeValue(cookie.path) && IsAttributeValue(cookie.domain) &&
         (cookie.secure || cookie.same_site != APICookie::SameSite::kNone) && AppendCookie(cookie);
}

bool APIResponsePrivate::AppendCookie(const APICookie& cookie) {
  if (cookie.name.empty() || cookie.value.empty() || cookie.path.empty()) {
    return false;
  }
  if (!IsCookieName(cookie.name)) {
    Log(LOG_ERR, "%s(%d)%s: key[%s] contains invalid character", kSource, kCookieNameLine,
        "AddCookie", LogText(cookie.name, cookie.name.size()).c_str());
    return false;
  }
  std::int64_t now = 0;
  if (cookie.expire_minutes > 0) {
    const bool client_clock = request_ != nullptr && request_->HasParam("client_time");
    now = client_clock ? JSON::AsInt64(request_->GetParam("client_time", Json::Value(0)))
                       : static_cast<std::int64_t>(std::time(nullptr));
  }
  Json::Value& cookies = root_["setCookie"];
  if (cookies.type() != Json::arrayValue) {
    return false;
  }
  cookies.append(FormatSetCookie(cookie, now));
  return true;
}

bool APIResponsePrivate::Redirect(const std::string& path) {
  if (request_ == nullptr) {
    return false;
  }
  std::string location = request_->GetURLProto("");
  location += "://";
  location += JSON::AsString(request_->GetEnv("HTTP_HOST", Json::Value("")));
  // Redirecting nowhere is the handler's fault and must not pass for a redirect
  // to the start page.
  if (path.empty()) {
    throw std::out_of_range("basic_string::at");
  }
  if (path.front() != '/') {
    location += '/';
  }
  location += path;
  return owner_->SetHeader("Location", location);
}

void APIResponsePrivate::SetCallbackFunc(void (*function)(void*), void* argument) {
  const Callback callback(function, argument);
  if (function != nullptr &&
      std::find(callbacks_.begin(), callbacks_.end(), callback) == callbacks_.end()) {
    callbacks_.push_back(callback);
  }
}

}  // namespace ORBO
