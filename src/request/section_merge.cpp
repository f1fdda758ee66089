#include "request/section_merge.h"

#include <algorithm>

#include "util/json_types.h"

namespace ORBO {

bool MergeSection(Json::Value& section, Json::Value value, bool string_only) {
  if (JSON::IsEmpty(value) || !JSON::IsObject(value) || !JSON::IsObject(section)) {
    return false;
  }
  if (JSON::IsEmpty(section) &&
      (!string_only || std::all_of(value.begin(), value.end(), JSON::IsString))) {
    section.swap(value);
    return true;
  }
  for (auto member = value.begin(); member != value.end(); ++member) {
    if (!string_only || JSON::IsString(*member)) {
      section[member.name()].swap(*member);
    }
  }
  return true;
}

}  // namespace ORBO
