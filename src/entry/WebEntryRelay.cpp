#include <webapi/WebEntry.h>

#include <cstdint>
#include <cstdio>
#include <iostream>
#include <limits>
#include <string>

#include "entry/http_header.h"
#include "platform/relay.h"
#include "request/APIRequestPrivate.h"
#include "util/error_codes.h"
#include "util/json_types.h"
#include "util/log.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "WebEntry.cpp";
constexpr int kRelayFailedLine = 618;  // prescribed for this message
constexpr char kTarget[] = "relay_ds";
constexpr char kTimeout[] = "relay_timeout";

// Where the call goes, and what goes along.
struct Relay {
  std::int64_t target = 0;
  int timeout = -1;  // seconds; above 0 it is a limit
  Json::Value params;
};

Relay TakeRelay(Json::Value params) {
  Relay relay;
  relay.target = JSON::AsInt64(JSON::At(params, kTarget));
  JSON::Remove(params, kTarget);
  if (const Json::Value* const timeout = JSON::Find(params, kTimeout)) {
    relay.timeout = JSON::AsInt(*timeout);
  }
  JSON::Remove(params, kTimeout);
  relay.params = std::move(params);
  return relay;
}

// Queues the call, and for an upload the body in front of it, which nobody follows.
// The id of the call, or a negative one.
int Queue(CredRequestMgr& manager, const Relay& relay, APIRequest* request) {
  // Another target is not to be taken for one whose id is too large here.
  if (relay.target < std::numeric_limits<long>::min() ||
      relay.target > std::numeric_limits<long>::max()) {
    return -1;
  }
  const auto target = static_cast<long>(relay.target);
  const std::string api = request->GetAPIClass();
  const std::string method = request->GetAPIMethod();
  const int version = request->GetAPIVersion();
  if (request->IsUploadRequest()) {
    Json::Value headers(Json::objectValue);
    headers["Content-Type"] = request->GetEnv("CONTENT_TYPE", Json::Value());
    headers["Content-Length"] = request->GetEnv("CONTENT_LENGTH", Json::Value());
    manager.AddRelayRequest(target, api, version, method, headers, stdin, nullptr);
  }
  return manager.AddWebAPIRequest(target, api, version, method, relay.params);
}

}  // namespace

bool WebEntry::ProcessRelay(APIRequest* request, APIResponse* response) {
  if (!CheckRequestParam(request, response) || !AddAPIInfo(request)) {
    return false;
  }
  const Json::Value skip_timeout = request->GetAPIInfo("skipTimeout", Json::Value(false));
  if (const int error = CheckPermission(JSON::AsBool(skip_timeout))) {
    response->SetError(error);
    return false;
  }
  const Relay relay = TakeRelay(request->GetParam("", Json::Value(Json::objectValue)));
  CredRequestMgr manager(request->GetLoginUserName());
  const int id = Queue(manager, relay, request);
  if (id < 0) {
    response->SetError(kErrorRelay);
    return false;
  }
  if (relay.timeout > 0) {
    manager.GetRequest(id)->SetResponseTimeout(relay.timeout);
  }
  if (!manager.Run()) {
    Log(LOG_ERR, "%s:%d relay request fail[%d]", kSource, kRelayFailedLine, manager.GetError());
    response->SetError(kErrorRelay);
    return false;
  }
  // Nothing can fail once the entry leaves the output to this.
  const std::string header = FormatHeaderBlock(response->GetHeaders(), response->GetCookies());
  response->SetEnableOutput(false);
  for (const std::string* const text : {&header, &manager.GetResponse(id)}) {
    std::cout.write(text->data(), static_cast<std::streamsize>(text->size()));
  }
  std::cout.flush();
  return true;
}

}  // namespace ORBO
