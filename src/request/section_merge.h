#pragma once

#include <json/value.h>

namespace ORBO {

// Moves the members of the object `value` into the object `section`, replacing
// members of the same name and keeping all others.  With `string_only`, members
// that are no strings are skipped.  False, and nothing changed, if either is not
// an object or `value` has no members.
bool MergeSection(Json::Value& section, Json::Value value, bool string_only);

}  // namespace ORBO
