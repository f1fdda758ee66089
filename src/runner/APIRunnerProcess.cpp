#include <webapi/APIRunner.h>

#include <iostream>
#include <optional>

#include "request/APIRequestPrivate.h"
#include "runner/HatGuard.h"
#include "runner/entry_api.h"
#include "runner/table_lookup.h"
#include "util/PriorityGuard.h"
#include "util/StreamGuard.h"
#include "util/error_codes.h"
#include "util/exception_text.h"
#include "util/json_types.h"
#include "util/log.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "APIRunner.cpp";

// Calls `function`, a check or a handler of a separately built library, and
// keeps its exceptions from leaving.  False if it threw.
template <typename Function>
bool CallLibrary(const CallName& call, Function function) {
  try {
    function();
    return true;
  } catch (...) {
    Log(LOG_ERR, "%s:%d %s[%d].%s ended by an exception: %s", kSource, __LINE__, call.api.c_str(),
        call.version, call.method.c_str(), CurrentExceptionText().c_str());
  }
  return false;
}

// Asks the check row of `call`.  A refusal always leaves an error.
bool PassesCheck(const _tag_API_CHECK_TABLE* row, const CallName& call, APIRequest* request,
                 APIResponse* response) {
  if (row == nullptr || row->check == nullptr) {
    return true;
  }
  bool passed = false;
  CallLibrary(call, [&] { passed = row->check(request, response); });
  if (!passed && response->GetError() == 0) {
    response->SetError(kErrorNoResult);
  }
  return passed;
}

// Whether a call is one of those that the usage counters are about: asked for by a
// client, by intent, and not left out by its description.
bool IsCounted(APIRequestPrivate& request, bool allow_timeout) {
  return !allow_timeout && request.GetFlag("attr", "_collector_count_webapi", false) &&
         request.GetFlag("reqLib", "count", true);
}

// Checks and serves `call` by the tables of its library.
bool CallHandler(const _tag_API_TABLE* table, const _tag_API_CHECK_TABLE* checks,
                 const CallName& call, APIRequest* request, APIResponse* response) {
  if (!PassesCheck(FindCheck(checks, call), call, request, response)) {
    return false;
  }
  const _tag_API_TABLE* row = FindHandler(table, call);
  if (row == nullptr) {
    response->SetError(kErrorNoHandler);
    return false;
  }
  // Stays if the handler returns, or throws, without a result.
  response->SetError(kErrorNoResult);
  CallLibrary(call, [&] { row->handler(request, response); });
  return true;
}

}  // namespace

bool APIRunner::Process(APIRequest* request, APIResponse* response) {
  if (!SetProcessName(request, response) || !CheckRequestParam(request, response) ||
      !AddAPIInfo(request)) {
    return false;
  }
  if (request->HasParam("relay_ds")) {
    response->SetError(kErrorRelay);
    return false;
  }
  const bool is_entry = request->private_->api() == kEntryAPI;
  const bool done = is_entry ? ProcessEntry(request, response) : ProcessLib(request, response);
  // The calls of a compound request have named the process after themselves.
  SetProcessName(request, response);
  return done;
}

bool APIRunner::ProcessLib(APIRequest* request, APIResponse* response) {
  // Read before anything of the body is: the call that was checked is the call
  // that runs.
  const CallName call{request->GetAPIClass(), request->GetAPIVersion(), request->GetAPIMethod()};
  if (NeedPermission(request) && !CheckPermission(request, response) && !SkipPermission(request)) {
    return false;
  }
  const bool allow_upload = GetMethodAttr(call.api, call.version, call.method, "allowUpload");
  const bool allow_download = GetMethodAttr(call.api, call.version, call.method, "allowDownload");
  const bool allow_timeout = GetMethodAttr(call.api, call.version, call.method, "allowTimeout");
  if (IsCounted(*request->private_, allow_timeout)) {
    IncreaseCounter(request);
  }

  const HatGuard hat(call.api, call.method);
  if (request->IsUploadRequest() && (!allow_upload || !HandleUpload(request, response))) {
    return false;
  }
  _tag_API_TABLE* table = nullptr;
  _tag_API_CHECK_TABLE* checks = nullptr;
  if (!OpenLib(request, &table, &checks) || table == nullptr) {
    response->SetError(kErrorLibrary);
    return false;
  }
  std::optional<StreamGuard> input;
  if (!allow_upload) {
    input.emplace(std::cin);
  }
  std::optional<StreamGuard> output;
  if (!allow_download) {
    output.emplace(std::cout);
  }
  const PriorityGuard priority(
      JSON::AsInt(request->private_->GetData("reqLib", "priority", Json::Value(0))));
  return CallHandler(table, checks, call, request, response);
}

}  // namespace ORBO
