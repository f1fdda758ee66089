#include <unistd.h>

#include <webapi/WebEntry.h>

#include <cstdlib>
#include <utility>

#include "entry/last_answer.h"
#include "entry/session_cookie.h"
#include "platform/cgi.h"
#include "platform/files.h"
#include "request/APIRequestPrivate.h"
#include "util/error_codes.h"
#include "util/exception_text.h"
#include "util/json_types.h"
#include "util/log.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "WebEntry.cpp";
constexpr char kCookieVariable[] = "HTTP_COOKIE";
constexpr char kTokenVariable[] = "orboAccessToken";

}  // namespace

// A program that cannot even hold a request answers so and ends: no exception may
// leave the constructor.
WebEntry::WebEntry() try
    : temp_files_(Json::arrayValue),
      cgi_(std::make_unique<OrboCgi>()),
      perm_info_(Json::objectValue) {
  OrboCgiInit("", cgi_.get());
  OrboCgiLoadInCookies(cgi_.get());
  perm_info_["permResult"] = Json::Value(Json::arrayValue);
} catch (...) {
  WriteLastAnswer();
  _exit(EXIT_FAILURE);
}

WebEntry::~WebEntry() {
  OrboCgiFree(cgi_.get());
  for (const Json::Value& path : temp_files_) {
    if (JSON::IsString(path)) {
      // The texts of JSON values end with a NUL; a copy could fail, and a file be left.
      QLIBCSysUnlink(JSON::StringView(path).data());
    }
  }
}

void WebEntry::Run(const Json::Value& /*options*/) {
  bool is_answered = false;
  try {
    Serve();
    if (response_->IsEnableOutput()) {
      OutputAnswer(is_answered);
    }
    OrboCgiDiscardBody();
    if (response_->GetHttpdRestart()) {
      response_->SetCallbackFunc(RestartHttpd, nullptr);
    }
    HandleCallback(response_.get());
  } catch (...) {
    // There is no memory, not even for the text of the exception.
    Log(LOG_ERR, "%s:%d request ended without memory for its answer", kSource, __LINE__);
    if (!is_answered && response_->IsEnableOutput()) {
      WriteLastAnswer();
    }
  }
}

void WebEntry::Serve() {
  try {
    APIRequest* const request = request_.get();
    APIResponse* const response = response_.get();
    if (Initialize(Json::Value()) && SetProcessName(request, response)) {
      if (request->HasParam("relay_ds")) {
        ProcessRelay(request, response);
      } else {
        Process(request, response);
      }
    }
  } catch (...) {
    Log(LOG_ERR, "%s:%d request ended by an exception: %s", kSource, __LINE__,
        CurrentExceptionText().c_str());
    response_->SetError(kErrorNoResult);
  }
}

bool WebEntry::Initialize(const Json::Value& /*options*/) {
  request_->SetAttr("_collector_count_webapi", true);
  Json::Value env(Json::objectValue);
  if (!InitEnv(env)) {
    response_->SetError(kErrorBadRequest);
    return false;
  }
  request_->private_->InitEnv(std::move(env));
  Json::Value params(Json::objectValue);
  if (!InitParam(params)) {
    return false;
  }
  request_->private_->InitParam(std::move(params), false);
  return InitSessionVariables();
}

bool WebEntry::InitSessionVariables() {
  const APIParameter<std::string> session_id =
      request_->GetAndCheckString("_sid", APIRequest::PARAM_REQUIRED);
  const APIParameter<std::string> token =
      request_->GetAndCheckString("tid", APIRequest::PARAM_REQUIRED);
  if (session_id.IsInvalid() && token.IsInvalid()) {
    return true;
  }
  const char* const line = std::getenv(kCookieVariable);
  std::string cookie = line == nullptr ? "" : line;
  if (!session_id.IsInvalid()) {
    // Up to a NUL, which the environment cannot hold: both must show one id.
    cookie = WithSessionCookie(std::move(cookie), session_id.Get().c_str());
    setenv(kCookieVariable, cookie.c_str(), 1);
  } else if (setenv(kTokenVariable, token.Get().c_str(), 1) != 0) {
    response_->SetError(kErrorNoResult);
    return false;
  }
  OrboCgiLoadInCookies(cgi_.get());
  Json::Value env(Json::objectValue);
  env[kCookieVariable] = cookie;
  request_->private_->InitEnv(std::move(env));
  return true;
}

}  // namespace ORBO
