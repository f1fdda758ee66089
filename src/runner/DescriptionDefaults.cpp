#include "runner/DescriptionDefaults.h"

#include "util/json_text.h"
#include "util/read_file.h"

namespace ORBO {
namespace {

constexpr JSON::Comments kComments = JSON::Comments::kAllowed;

}  // namespace

void DescriptionDefaults::Read(const std::string& path) {
  if (ReadWholeFile(path, text_) && !JSON::SplitMembers(text_, kComments, members_)) {
    members_.clear();
  }
}

const Json::Value& DescriptionDefaults::Get(std::string_view name) {
  const std::string_view text = JSON::FindMember(members_, name);
  if (text.empty()) {
    return Json::Value::nullSingleton();
  }
  for (const Value& known : values_) {
    if (known.text == text.data()) {
      return known.value;
    }
  }
  Value& made = values_.emplace_back(Value{text.data(), Json::Value()});
  JSON::Parse(text, made.value, kComments);
  return made.value;
}

}  // namespace ORBO
