#include "session_errors.h"

#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace ORBO {

void RefuseParameter(APIResponse* response, const char* name) {
  Json::Value errors(Json::objectValue);
  errors["parameter"] = name;
  response->SetError(kErrorParameter, errors);
}

void RefuseFor(APIResponse* response, int seconds) {
  Json::Value errors(Json::objectValue);
  errors["retry_after"] = seconds;
  response->SetStatus(HTTP_STATUS_TOO_MANY_REQUESTS);
  response->SetHeader("Retry-After", std::to_string(seconds));
  response->SetError(kErrorTooManyFailures, errors);
}

bool IsPost(APIRequest* request, APIResponse* response) {
  // The calls of a compound request look like POST requests, whatever carried them.
  const char* const method = std::getenv("REQUEST_METHOD");
  if (request->GetRequestMethod() == APIRequest::METHOD_POST &&
      (method == nullptr || std::strcmp(method, "POST") == 0)) {
    return true;
  }
  response->SetStatus(HTTP_STATUS_METHOD_NOT_ALLOWED);
  response->SetHeader("Allow", "POST");
  response->SetError(kErrorPostOnly);
  return false;
}

}  // namespace ORBO
