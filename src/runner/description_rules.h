#pragma once

#include <json/value.h>

#include "runner/DescriptionDefaults.h"
#include "runner/DescriptionFile.h"

namespace ORBO {

// Whether the description entry `entry` is usable.  The second asks the same of an
// entry's text: a call loads many entries and builds values of one.
bool IsValidDescription(const Json::Value& entry);
bool IsValidDescription(const DescriptionFile::Entry& entry);

// Fills the keys that `entry` lacks: "authLevel", "allowUser" and "priority"
// from `defaults` (null where it lacks them too), "requestFormat" with "JSON".
void ApplyDescriptionDefaults(Json::Value& entry, DescriptionDefaults& defaults);

}  // namespace ORBO
