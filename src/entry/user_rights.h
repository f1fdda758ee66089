#pragma once

#include <json/value.h>

#include <string>

namespace ORBO {

class APIRequest;
class DescriptionCache;

// The user classes that may call `method` of the request's API `api`, a list if the
// description is right: the method's own in `descriptions`, or else the API's.
Json::Value AllowedUsers(APIRequest* request, const std::string& api, int version,
                         const std::string& method, DescriptionCache& descriptions);

// Whether the class of `user_name` stands in `allow_user`, a description's list
// of user classes.  False for an empty name, for what is no list, and for an
// empty list: what names nobody is open to nobody.
bool IsUserAllowed(APIRequest* request, const char* user_name, const Json::Value& allow_user);

// Whether `user_name` holds the application privilege that the request's API
// asks for; true when it asks for none.
bool HasRequiredPrivilege(APIRequest* request, const char* user_name);

}  // namespace ORBO
