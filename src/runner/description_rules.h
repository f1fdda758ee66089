#pragma once

#include <json/value.h>

namespace ORBO {

// Whether the description entry `entry` is usable.
bool IsValidDescription(const Json::Value& entry);

// Fills the keys that `entry` lacks: "authLevel", "allowUser" and "priority"
// from `lib_def` (null where it lacks them too), "requestFormat" with "JSON".
void ApplyDescriptionDefaults(Json::Value& entry, const Json::Value& lib_def);

}  // namespace ORBO
