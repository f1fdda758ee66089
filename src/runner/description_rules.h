#pragma once

#include <json/value.h>

#include "runner/DescriptionDefaults.h"
#include "runner/DescriptionFile.h"

namespace ORBO {

// What makes an entry unusable, by the key that is missing or wrong.
enum DescriptionFault : unsigned {
  kFaultyLib = 1,
  kFaultyMinVersion = 2,
  kFaultyMaxVersion = 4,
  kFaultyMethods = 8,
  kFaultyPriority = 16,
};

// The faults of `entry`, as a mask; all but the last one for what is no object.
unsigned DescriptionFaults(const DescriptionFile::Entry& entry);

// Whether `value` is one for "priority".
bool IsPriority(const Json::Value& value);

// Whether the description entry `entry` is usable.  The second asks the same of an
// entry's text: a call loads many entries and builds values of one.
bool IsValidDescription(const Json::Value& entry);
inline bool IsValidDescription(const DescriptionFile::Entry& entry) {
  return DescriptionFaults(entry) == 0;
}

// Fills the keys that `entry` lacks: "authLevel", "allowUser" and "priority"
// from `defaults` (null where it lacks them too), "requestFormat" with "JSON".
void ApplyDescriptionDefaults(Json::Value& entry, DescriptionDefaults& defaults);

}  // namespace ORBO
