#pragma once

#include <json/value.h>

#include <string>

namespace ORBO::tool {

// Fills `apis` with the descriptions of the web-API directory by API name: those of
// every file, or of the file that `api` belongs to, which need not describe it.
// False, after a complaint, if the directory cannot be entered.
bool LoadDescribedAPIs(Json::Value& apis);
bool LoadDescribedAPI(const std::string& api, Json::Value& apis);

// The highest version of `api` that a call can name; 1 if it is not in `apis`.
int HighestVersion(const std::string& api, const Json::Value& apis);

}  // namespace ORBO::tool
