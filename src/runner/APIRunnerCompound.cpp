#include <webapi/APIRunner.h>

#include <memory>
#include <new>
#include <utility>

#include "request/APIRequestPrivate.h"
#include "response/APIResponsePrivate.h"
#include "runner/entry_api.h"
#include "util/error_codes.h"
#include "util/json_types.h"
#include "util/log.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "APIRunner.cpp";
constexpr std::int32_t kDeepestCompound = 8;

// What the calls of `request` start from: its environment, as that of a POST.
Json::Value SubRequestOptions(APIRequest* request) {
  Json::Value options(Json::objectValue);
  Json::Value& env = options["environ"];
  env = request->GetEnv("", Json::Value(Json::objectValue));
  JSON::Remove(env, "QUERY_STRING");
  JSON::Set(env, "REQUEST_METHOD", "POST");
  options["postParam"] = Json::Value(Json::objectValue);
  return options;
}

// Makes `call` the request of one element of the list, with nothing left of the
// element before: neither its names, its parameters nor its session facts.
void TakeElement(const Json::Value& element, APIRequestPrivate& caller, APIRequestPrivate& call) {
  Json::Value params(Json::objectValue);
  params["postParam"] = element;
  call.ClearAPIDesc();
  call.InitParam(std::move(params), true);
  call.ClearData("attr", "");
  // A token that was refused leaves facts without a user: those of nobody.
  const bool is_known = !caller.GetText("session", "username", "").empty();
  call.InitSession(is_known ? caller.GetData("session", "", Json::Value()) : Json::Value());
}

bool IsNamed(const APIRequestPrivate& call) {
  return !call.api().empty() && !call.method().empty() && call.version() >= 1;
}

// The body of `response`, with the names of its call where it has them.
Json::Value NamedBody(const APIRequestPrivate& call, APIResponsePrivate& response) {
  Json::Value body = response.TakeBody();
  if (IsNamed(call)) {
    body["api"] = call.api();
    body["version"] = call.version();
    body["method"] = call.method();
  }
  return body;
}

}  // namespace

bool APIRunner::ProcessEntry(APIRequest* request, APIResponse* response) {
  if (request->private_->method() != kEntryMethod) {
    return false;
  }
  if (!request->HasParam("compound") || compound_depth_ >= kDeepestCompound) {
    response->SetError(kErrorCompound);
    return false;
  }
  ++compound_depth_;
  const bool done = HandleCompound(request, response);
  --compound_depth_;
  return done;
}

bool APIRunner::HandleCompound(APIRequest* request, APIResponse* response) {
  const bool stop_when_error = JSON::AsBool(request->GetParam("stop_when_error", false));
  const Json::Value& compound = request->GetParamRef("compound", Json::Value::nullSingleton());
  const auto size = JSON::IsArray(compound) ? compound.size() : Json::ArrayIndex{0};
  if (!JSON::IsArray(compound) || size > static_cast<Json::ArrayIndex>(calls_left_)) {
    response->SetError(kErrorCompound);
    return false;
  }
  calls_left_ -= static_cast<std::int32_t>(size);
  // A check on the way has told the outermost request alone who calls.
  const APIRequest& caller = compound_depth_ > 1 ? *request_ : *request;
  const std::unique_ptr<APIRequest> sub_request(new (std::nothrow)
                                                    APIRequest(SubRequestOptions(request)));
  if (sub_request == nullptr) {
    Log(LOG_ERR, "%s:%d new APIRequest Fail", kSource, __LINE__);
    response->SetError(kErrorNoResult);
    return false;
  }
  const std::unique_ptr<APIResponse> sub_response(new (std::nothrow)
                                                      APIResponse(sub_request.get()));
  if (sub_response == nullptr) {
    Log(LOG_ERR, "%s:%d new APIResponse Fail", kSource, __LINE__);
    response->SetError(kErrorNoResult);
    return false;
  }
  Json::Value data(Json::objectValue);
  Json::Value& result = data["result"];
  result = Json::Value(Json::arrayValue);
  bool has_fail = false;
  for (const Json::Value& element : compound) {
    TakeElement(element, *caller.private_, *sub_request->private_);
    sub_response->private_->ClearResult();
    if (has_fail && stop_when_error) {
      sub_response->SetError(kErrorSkipped);
    } else if (!ProcessElement(sub_request.get(), sub_response.get())) {
      has_fail = true;
    }
    if (sub_response->HasServerError()) {
      response->SetServerError(sub_response->GetServerError());
    }
    if (sub_response->GetHttpdRestart()) {
      response->SetHttpdRestart(true);
    }
    result.append(NamedBody(*sub_request->private_, *sub_response->private_));
  }
  data["has_fail"] = has_fail;
  // Those of the last call: each call begins with an empty list.
  response->SetCallbackFuncs(sub_response->GetCallbackFuncs());
  response->SetSuccess(data);
  return true;
}

bool APIRunner::ProcessElement(APIRequest* request, APIResponse* response) {
  // The one body and the one output belong to the whole request.  A call without a name
  // is left to the checks, whatever the defaults of methods are.
  if (IsNamed(*request->private_) &&
      (GetMethodAttr(request, "allowUpload") || GetMethodAttr(request, "allowDownload"))) {
    response->SetError(kErrorNotInCompound);
    return false;
  }
  if (Process(request, response)) {
    return response->GetError() == 0;
  }
  // A refusal says why, or the client would read it as a success.
  if (response->GetError() == 0) {
    response->SetError(kErrorNoResult);
  }
  return false;
}

}  // namespace ORBO
