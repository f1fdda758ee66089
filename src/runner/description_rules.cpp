#include "runner/description_rules.h"

#include "util/json_types.h"
#include "util/number_text.h"

namespace ORBO {
namespace {

constexpr int kMinPriority = -10;
constexpr int kMaxPriority = 10;

void SetDefault(Json::Value& entry, const char* key, DescriptionDefaults& defaults) {
  if (!JSON::Has(entry, key)) {
    JSON::Set(entry, key, defaults.Get(key));
  }
}

bool IsPriorityNumber(std::int64_t number) {
  return number >= kMinPriority && number <= kMaxPriority;
}

// The integer that a JSON value is, by its text.
bool ReadInt(std::string_view text, std::int64_t& out) {
  JSON::Integer integer;
  return JSON::ReadInteger(text, integer) && JSON::ToSigned(integer, out);
}

bool IsFilledString(std::string_view text) { return text.size() > 2 && text.front() == '"'; }

}  // namespace

bool IsPriority(const Json::Value& value) {
  return JSON::IsInt(value) && IsPriorityNumber(JSON::AsInt64(value));
}

bool IsValidDescription(const Json::Value& entry) {
  if (entry.type() != Json::objectValue || JSON::StringView(JSON::At(entry, "lib")).empty()) {
    return false;
  }
  if (!JSON::IsInt(JSON::At(entry, "minVersion")) || !JSON::IsInt(JSON::At(entry, "maxVersion"))) {
    return false;
  }
  // Null is no method list: an entry that was left empty by mistake must show.
  if (JSON::At(entry, "methods").type() != Json::objectValue) {
    return false;
  }
  const Json::Value* priority = JSON::Find(entry, "priority");
  return priority == nullptr || IsPriority(*priority);
}

unsigned DescriptionFaults(const DescriptionFile::Entry& entry) {
  // What is no object has no members.
  std::int64_t number = 0;
  unsigned faults = 0;
  if (!IsFilledString(entry.Find("lib"))) {
    faults |= kFaultyLib;
  }
  if (!ReadInt(entry.Find("minVersion"), number)) {
    faults |= kFaultyMinVersion;
  }
  if (!ReadInt(entry.Find("maxVersion"), number)) {
    faults |= kFaultyMaxVersion;
  }
  if (entry.Find("methods").substr(0, 1) != "{") {
    faults |= kFaultyMethods;
  }
  const std::string_view priority = entry.Find("priority");
  if (!priority.empty() && !(ReadInt(priority, number) && IsPriorityNumber(number))) {
    faults |= kFaultyPriority;
  }
  return faults;
}

void ApplyDescriptionDefaults(Json::Value& entry, DescriptionDefaults& defaults) {
  for (const char* const key : {"authLevel", "allowUser", "priority"}) {
    SetDefault(entry, key, defaults);
  }
  if (!JSON::Has(entry, "requestFormat")) {
    JSON::Set(entry, "requestFormat", Json::Value("JSON"));
  }
}

}  // namespace ORBO
