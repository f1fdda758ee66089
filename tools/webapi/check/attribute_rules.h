#pragma once

#include <string_view>

#include "check/json_source.h"

namespace ORBO::tool {

// Judges the attributes of a method, or those that "lib.def" gives to methods without
// any of their own.  `text` is the object; `checks_users` tells whether a permission
// check is made that asks for "allowUser".
void CheckAttributes(const JsonSource& source, std::string_view text, bool checks_users,
                     Findings& findings);

}  // namespace ORBO::tool
