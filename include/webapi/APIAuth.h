#pragma once

#include <webapi/Export.h>

namespace ORBO {

class APIRequest;
class APIResponse;

// Permission checks that handlers may call themselves.
class WEBAPI_EXPORT APIAuth {
 public:
  APIAuth() = delete;

  // Whether the class of `user_name` ("admin" or "normal" by the request's
  // session, "domain" for a name with a backslash, else "ldap" for one with
  // "@", else "local") stands in the "allowUser" of the request's API.  False
  // for a null or empty name, and for an API that names no classes.
  static bool CheckAllowUser(APIRequest* request, const char* user_name);

  // Checks the session `session_id` and the rights of the request's user.  False
  // with error 105 on every refusal; false also when the response already
  // carries an error.  The response of a handler carries the one for "no result" until
  // it sets a result: call this in a check function, or after SetSuccess().
  static bool CheckPermission(APIRequest* request, APIResponse* response, const char* session_id,
                              bool allow_timeout);

  // Marks the request's session as active now.  False if there is none, or one that
  // would not admit the request: it has timed out, or is another address's.
  static bool UpdateTimeout(APIRequest* request);
};

}  // namespace ORBO
