#include <webapi/APIResponse.h>

#include <climits>
#include <cstdlib>

#include <webapi/APIRequest.h>

#include "response/APIResponsePrivate.h"
#include "response/content_type.h"
#include "util/json_types.h"

namespace ORBO {
namespace {

constexpr char kServerErrorHeader[] = "x-request-error";

// The decimal number at the start of `text`, blanks skipped; 0 for none, the
// nearest int for one out of range.
int LeadingNumber(const std::string& text) {
  const long number = std::strtol(text.c_str(), nullptr, 10);
  if (number > INT_MAX) {
    return INT_MAX;
  }
  return number < INT_MIN ? INT_MIN : static_cast<int>(number);
}

}  // namespace

APIResponse::APIResponse(APIRequest* request)
    : private_(std::make_unique<APIResponsePrivate>(request, this)) {
  SetHeader(kContentTypeHeader, kDefaultContentType);
}

APIResponse::~APIResponse() = default;

void APIResponse::SetSuccess(const Json::Value& data) { private_->SetError(0, data); }

void APIResponse::SetError(int code, const Json::Value& errors) {
  private_->SetError(code, errors);
}

int APIResponse::GetError() { return private_->GetError(); }

Json::Value APIResponse::GetBody() { return private_->Body(); }

bool APIResponse::SetHeader(const std::string& name, const std::string& value) {
  return private_->SetData("headers", name, Json::Value(value), true);
}

bool APIResponse::HasHeader(const std::string& name) { return private_->HasData("headers", name); }

std::string APIResponse::GetHeader(const std::string& name, const std::string& fallback) {
  return JSON::AsString(private_->GetData("headers", name, Json::Value(fallback)));
}

Json::Value APIResponse::GetHeaders() {
  return private_->GetData("headers", "", Json::Value::nullSingleton());
}

bool APIResponse::SetStatus(_tag_HTTP_STATUS_CODE code, const std::string& message) {
  return SetHeader("Status", std::to_string(static_cast<int>(code))) &&
         private_->SetData("option", "statusMsg", Json::Value(message), true);
}

int APIResponse::GetStatus() { return LeadingNumber(GetHeader("Status", "200")); }

bool APIResponse::Redirect(const std::string& path) {
  return private_->Redirect(path) && SetStatus(HTTP_STATUS_FOUND, "");
}

bool APIResponse::AddCookie(const std::string& path, const std::string& name,
                            const std::string& value) {
  return private_->AddCookie(name, value, path, 0, "", false, false);
}

bool APIResponse::AddCookie(const APICookie& cookie) { return private_->AddCookie(cookie); }

Json::Value APIResponse::GetCookies() {
  return private_->GetData("setCookie", "", Json::Value::nullSingleton());
}

void APIResponse::SetEnableOutput(bool enable) {
  private_->SetData("option", "isDownload", Json::Value(enable), false);
}

bool APIResponse::IsEnableOutput() {
  return JSON::AsBool(private_->GetData("option", "isDownload", Json::Value(true)));
}

void APIResponse::SetHttpdRestart(bool restart) {
  private_->SetData("option", "restart_httpd", Json::Value(restart), false);
}

bool APIResponse::GetHttpdRestart() {
  return JSON::AsBool(private_->GetData("option", "restart_httpd", Json::Value(false)));
}

void APIResponse::SetServerError(const std::string& word) {
  private_->SetData("headers", kServerErrorHeader, Json::Value(word), true);
}

std::string APIResponse::GetServerError() {
  // Read as a C string: what follows a NUL is no part of the word.
  return JSON::AsString(private_->GetData("headers", kServerErrorHeader, Json::Value(""))).c_str();
}

bool APIResponse::HasServerError() { return private_->HasData("headers", kServerErrorHeader); }

void APIResponse::SetCallbackFunc(void (*function)(void*), void* argument) {
  private_->SetCallbackFunc(function, argument);
}

void* APIResponse::GetCallbackFuncs() { return private_->GetCallbackFuncs(); }

void APIResponse::SetCallbackFuncs(void* list) {
  if (list == nullptr) {
    return;
  }
  // A copy, since the list may be this response's own.
  const auto callbacks = *static_cast<APIResponsePrivate::CallbackList*>(list);
  for (const auto& [function, argument] : callbacks) {
    SetCallbackFunc(function, argument);
  }
}

}  // namespace ORBO
