#include <webapi/APIRunner.h>

#include "request/APIRequestPrivate.h"
#include "runner/DescriptionCache.h"
#include "util/error_codes.h"
#include "util/json_types.h"

namespace ORBO {
namespace {

// Whether `call` names an API, version and method that `descs` describes; the
// error code if it does not, else 0.
int CheckNames(const APIRequestPrivate& call, DescriptionCache& descs) {
  if (call.api().empty() || call.version() < 1 || call.method().empty()) {
    return kErrorBadRequest;
  }
  if (!descs.Load(call.api()) || !descs.Has(call.api())) {
    return kErrorNoSuchAPI;
  }
  const Json::Value& info = *descs.Info(call.api());
  // The bounds are any integers, also such as no version can reach.
  if (call.version() > JSON::AsInt64(JSON::At(info, "maxVersion")) ||
      call.version() < JSON::AsInt64(JSON::At(info, "minVersion"))) {
    return kErrorNoSuchVersion;
  }
  if (!descs.IsMethodListed(call.api(), call.version(), call.method())) {
    return kErrorNoSuchMethod;
  }
  return 0;
}

}  // namespace

bool APIRunner::CheckRequestParam(APIRequest* request, APIResponse* response) {
  int error = CheckNames(*request->private_, *descs_);
  if (error == 0 && request->IsUploadRequest() && !GetMethodAttr(request, "allowUpload")) {
    error = kErrorUploadNotAllowed;
  }
  if (error == 0 && request->IsDemoMode() && !GetMethodAttr(request, "allowDemo")) {
    error = kErrorDemoMode;
  }
  if (error != 0) {
    response->SetError(error);
  }
  return error == 0;
}

}  // namespace ORBO
