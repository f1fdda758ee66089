#pragma once

#include <json/value.h>

namespace ORBO {

class APIRequest;

// The user classes that may make the request's call, a list if the description is
// right: the method's own, whose attributes are `method`, or else the API's.
Json::Value AllowedUsers(APIRequest* request, const Json::Value& method);

// Whether the class of `user_name` stands in `allow_user`, a description's list
// of user classes.  False for an empty name, for what is no list, and for an
// empty list: what names nobody is open to nobody.
bool IsUserAllowed(APIRequest* request, const char* user_name, const Json::Value& allow_user);

// Whether `user_name` holds the application privilege that the request's API
// asks for; true when it asks for none.
bool HasRequiredPrivilege(APIRequest* request, const char* user_name);

}  // namespace ORBO
