#include "runner/description_rules.h"

#include "util/json_types.h"

namespace ORBO {
namespace {

constexpr int kMinPriority = -10;
constexpr int kMaxPriority = 10;

void SetDefault(Json::Value& entry, const char* key, const Json::Value& value) {
  if (!JSON::Has(entry, key)) {
    JSON::Set(entry, key, value);
  }
}

bool IsPriority(const Json::Value& value) {
  if (!JSON::IsInt(value)) {
    return false;
  }
  const std::int64_t priority = JSON::AsInt64(value);
  return priority >= kMinPriority && priority <= kMaxPriority;
}

}  // namespace

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

void ApplyDescriptionDefaults(Json::Value& entry, const Json::Value& lib_def) {
  SetDefault(entry, "authLevel", JSON::At(lib_def, "authLevel"));
  SetDefault(entry, "allowUser", JSON::At(lib_def, "allowUser"));
  SetDefault(entry, "requestFormat", Json::Value("JSON"));
  SetDefault(entry, "priority", JSON::At(lib_def, "priority"));
}

}  // namespace ORBO
