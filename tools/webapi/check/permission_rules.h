#pragma once

#include <json/value.h>

#include "check/Findings.h"

namespace ORBO::tool {

// Who may call: the members "authLevel" and "allowUser", of an entry or of "lib.def".

// Judges an "authLevel" that is there.
void CheckAuthLevel(const Json::Value& level, const Place& place, Findings& findings);

// Judges an "allowUser" that is there: a list of user classes.
void CheckAllowUser(const Json::Value& classes, const Place& place, Findings& findings);

}  // namespace ORBO::tool
