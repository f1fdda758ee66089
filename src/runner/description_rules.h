#pragma once

#include <json/value.h>

#include <string>

#include "runner/DescriptionFile.h"

namespace ORBO {

// The file of the web-API directory that holds the defaults.
inline constexpr char kDefaultsFile[] = "lib.def";

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
// from `lib_def` (null where it lacks them too), "requestFormat" with "JSON".
void ApplyDescriptionDefaults(Json::Value& entry, const Json::Value& lib_def);

// Reads the defaults file `path`.  False, and `lib_def` unchanged, if it cannot be
// read or is no object: then there are no defaults.
bool ReadDescriptionDefaults(const std::string& path, Json::Value& lib_def);

}  // namespace ORBO
