#pragma once

namespace ORBO {

class APIRequest;
class APIResponse;

// The error codes of the session APIs.
enum SessionError : int {
  kErrorParameter = 1101,  // errors: {"parameter": name}
  kErrorPostOnly = 1102,
  kErrorPasswordInURL = 1103,
  kErrorRefused = 1104,          // user or password wrong; which one is not told
  kErrorTooManyFailures = 1105,  // errors: {"retry_after": seconds}
  kErrorUnavailable = 1106,      // the system log tells why
  kErrorNoSession = 1107,        // no such session, or the caller has none
  kErrorOtherSite = 1108,        // a page of another site made the request
};

// Each sets the error with its facts, and the HTTP status that belongs to it.
void RefuseParameter(APIResponse* response, const char* name);
void RefuseFor(APIResponse* response, int seconds);
// False, with the error set, for a request that is no POST.
bool IsPost(APIRequest* request, APIResponse* response);

}  // namespace ORBO
