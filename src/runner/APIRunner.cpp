#include <webapi/APIRunner.h>

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "request/APIRequestPrivate.h"
#include "response/APIResponsePrivate.h"
#include "runner/APIRunnerPrivate.h"
#include "runner/DescriptionCache.h"
#include "runner/DescriptionDefaults.h"
#include "util/error_codes.h"
#include "util/exception_text.h"
#include "util/json_types.h"
#include "util/log.h"
#include "util/paths.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "APIRunner.cpp";

}  // namespace

APIRunner::APIRunner()
    : defaults_(std::make_unique<DescriptionDefaults>()),
      descs_(std::make_unique<DescriptionCache>(*defaults_)),
      request_(std::make_unique<APIRequest>(Json::Value())),
      response_(std::make_unique<APIResponse>(request_.get())),
      private_(std::make_unique<APIRunnerPrivate>(this)) {
  setsid();
  defaults_->Read(RootedPath(kWebAPIDirectory) + kDefaultsFile);
}

APIRunner::~APIRunner() {
  CloseLib();
  response_.reset();
  request_.reset();
  private_->ShowProgram();
}

void APIRunner::SetArgs(int argc, char** argv) { private_->SetArgs(argc, argv); }

void APIRunner::Run(const Json::Value& options) {
  try {
    if (JSON::IsNull(options)) {
      response_->SetError(kErrorBadRequest);
      return;
    }
    if (!Initialize(options) || !SetProcessName(request_.get(), response_.get())) {
      return;
    }
    if (request_->HasParam("relay_ds")) {
      response_->SetError(kErrorBadRequest);
      return;
    }
    Process(request_.get(), response_.get());
  } catch (...) {
    Log(LOG_ERR, "%s:%d request ended by an exception: %s", kSource, __LINE__,
        CurrentExceptionText().c_str());
    response_->SetError(kErrorNoResult);
  }
}

bool APIRunner::Initialize(const Json::Value& options) {
  Json::Value env(Json::objectValue);
  if (!InitEnv(env)) {
    return false;
  }
  request_->private_->InitEnv(std::move(env));
  if (const Json::Value* own_env = JSON::Find(options, "environ")) {
    request_->InitEnv(*own_env);
  }
  if (const Json::Value* session = JSON::Find(options, "session")) {
    request_->InitSession(*session);
  }
  const Json::Value& attributes = JSON::At(options, "attr");
  if (JSON::IsObject(attributes)) {
    for (auto attribute = attributes.begin(); attribute != attributes.end(); ++attribute) {
      request_->SetAttr(attribute.name(), *attribute);
    }
  }
  if (JSON::IsEmpty(options)) {
    response_->SetError(kErrorBadRequest);
    return false;
  }
  request_->InitParam(options, false);
  return true;
}

bool APIRunner::InitEnv(Json::Value& env) {
  if (!JSON::IsObject(env)) {
    response_->SetError(kErrorBadRequest);
    return false;
  }
  for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
    const std::string_view text(*variable);
    const std::size_t equals = text.find('=');
    if (equals != std::string_view::npos) {
      JSON::Set(env, text.substr(0, equals), std::string(text.substr(equals + 1)));
    }
  }
  return true;
}

bool APIRunner::NeedPermission(APIRequest* /*request*/) { return false; }

bool APIRunner::CheckPermission(APIRequest* /*request*/, APIResponse* /*response*/) { return true; }

bool APIRunner::HandleUpload(APIRequest* /*request*/, APIResponse* /*response*/) { return true; }

bool APIRunner::SkipPermission(APIRequest* /*request*/) { return true; }

Json::Value APIRunner::GetResponse() {
  if (response_ == nullptr) {
    return Json::Value();
  }
  Json::Value body = response_->GetBody();
  body["httpd_restart"] = response_->GetHttpdRestart();
  return body;
}

bool APIRunner::SetProcessName(APIRequest* request, APIResponse* response) {
  const APIRequestPrivate& call = *request->private_;
  if (call.api().empty()) {
    response->SetError(kErrorBadRequest);
    return false;
  }
  if (!private_->ShowCall(call.api(), call.version(), call.method())) {
    const int error = errno;
    response->SetError(kErrorProcessName);
    Log(LOG_ERR, "%s:%d Set process name fail[%s]", kSource, __LINE__, std::strerror(error));
    return false;
  }
  return true;
}

}  // namespace ORBO
