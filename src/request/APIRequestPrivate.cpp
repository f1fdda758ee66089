#include "request/APIRequestPrivate.h"

#include <utility>

#include "request/encrypted_params.h"
#include "request/section_merge.h"
#include "util/json_text.h"
#include "util/json_types.h"

namespace ORBO {
namespace {

constexpr const char* kSections[] = {"environ", "cookie", "reqLib", "session",
                                     "param",   "attr",   "url",    "userAgent"};

}  // namespace

APIRequestPrivate::APIRequestPrivate(APIRequest* owner) : owner_(owner) {
  for (const char* section : kSections) {
    root_[section] = Json::Value(Json::objectValue);
  }
}

void APIRequestPrivate::Init(const Json::Value& request) {
  if (JSON::IsEmpty(request) || !JSON::IsObject(request)) {
    return;
  }
  if (const Json::Value* env = JSON::Find(request, "environ")) {
    InitEnv(*env);
  }
  if (JSON::Has(request, "getParam") || JSON::Has(request, "postParam")) {
    InitParam(request, false);
  }
  if (const Json::Value* info = JSON::Find(request, "reqLib")) {
    InitAPIInfo(*info);
  }
  if (const Json::Value* session = JSON::Find(request, "session")) {
    InitSession(*session);
  }
}

void APIRequestPrivate::InitEnv(Json::Value env) {
  MergeSection(root_["environ"], std::move(env), true);
  InitCookie();
  InitRequestMethod();
}

void APIRequestPrivate::InitParam(Json::Value request, bool reset) {
  if (reset) {
    ClearData("param", "");
  }
  TakeParams(request, "getParam");
  TakeParams(request, "postParam");
}

void APIRequestPrivate::TakeParams(Json::Value& request, const char* member) {
  Json::Value* params = JSON::Find(request, member);
  if (params == nullptr) {
    return;
  }
  // What cannot be deciphered is missing from here on, and the checks of the
  // call report it.
  DecryptParam(*params);
  SetAPIDesc(*params);
  MergeSection(root_["param"], std::move(*params), false);
}

void APIRequestPrivate::AddUploadFields(Json::Value fields) {
  DecryptParam(fields);
  MergeSection(root_["param"], std::move(fields), false);
}

void APIRequestPrivate::SetAPIDesc(const Json::Value& params) {
  if (const Json::Value* api = JSON::Find(params, "api")) {
    api_ = JSON::AsString(*api);
  }
  if (const Json::Value* version = JSON::Find(params, "version")) {
    version_ = JSON::AsInt(*version);
  }
  if (const Json::Value* method = JSON::Find(params, "method")) {
    method_ = JSON::AsString(*method);
  }
}

void APIRequestPrivate::ClearAPIDesc() {
  api_.clear();
  version_ = 0;
  method_.clear();
}

void APIRequestPrivate::InitAPIInfo(Json::Value info) {
  deferred_methods_ = {};
  ClearData("reqLib", "");
  MergeSection(root_["reqLib"], std::move(info), false);
}

void APIRequestPrivate::SetDeferredMethods(SharedText methods) {
  deferred_methods_ = std::move(methods);
}

void APIRequestPrivate::MaterialiseMethods(const std::string& section, const std::string& key) {
  if (!deferred_methods_.text.empty() && section == "reqLib" && (key.empty() || key == "methods")) {
    JSON::Parse(deferred_methods_.text, root_["reqLib"]["methods"], JSON::Comments::kAllowed);
    deferred_methods_ = {};
  }
}

bool APIRequestPrivate::HasData(const std::string& section, const std::string& key) {
  MaterialiseMethods(section, key);
  return APIBase::HasData(section, key);
}

bool APIRequestPrivate::SetData(const std::string& section, const std::string& key,
                                const Json::Value& value, bool string_only) {
  MaterialiseMethods(section, key);
  return APIBase::SetData(section, key, value, string_only);
}

bool APIRequestPrivate::ClearData(const std::string& section, const std::string& key) {
  MaterialiseMethods(section, key);
  return APIBase::ClearData(section, key);
}

const Json::Value& APIRequestPrivate::GetData(const std::string& section, const std::string& key,
                                              const Json::Value& default_value) {
  MaterialiseMethods(section, key);
  return APIBase::GetData(section, key, default_value);
}

void APIRequestPrivate::InitSession(Json::Value session) {
  ClearData("session", "");
  MergeSection(root_["session"], std::move(session), false);
}

bool APIRequestPrivate::DecryptParam(Json::Value& params) { return ORBO::DecryptParam(params); }

bool APIRequestPrivate::DecryptAESParam(Json::Value& params) {
  return ORBO::DecryptAESParam(params);
}

std::string APIRequestPrivate::GetText(const std::string& section, const std::string& key,
                                       const std::string& fallback) {
  const Json::Value& value = GetData(section, key, Json::Value::nullSingleton());
  return &value == &Json::Value::nullSingleton() ? fallback : JSON::AsString(value);
}

bool APIRequestPrivate::GetFlag(const std::string& section, const std::string& key, bool fallback) {
  return JSON::AsBool(GetData(section, key, Json::Value(fallback)));
}

}  // namespace ORBO
