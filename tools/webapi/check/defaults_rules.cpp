#include "check/defaults_rules.h"

#include <json/value.h>

#include "check/DescribedFile.h"
#include "check/attribute_rules.h"
#include "check/json_faults.h"
#include "check/known_names.h"
#include "check/permission_rules.h"
#include "runner/description_rules.h"
#include "util/json_scan.h"
#include "util/json_text.h"
#include "util/json_types.h"

namespace ORBO::tool {
namespace {

void CheckMember(const JsonSource& source, const Member& member, Findings& findings) {
  const std::string name = JSON::DecodeString(member.key);
  const Place place = source.At(member.key);
  Json::Value value;
  JSON::Parse(member.text, value, JSON::Comments::kAllowed);
  if (name == "authLevel") {
    CheckAuthLevel(value, place, findings);
  } else if (name == "allowUser") {
    CheckAllowUser(value, place, findings);
  } else if (name == "priority") {
    if (!IsPriority(value)) {
      findings.Error(place, "\"priority\" must be an integer from -10 to 10");
    }
  } else if (name != "methods") {
    findings.Warn(place,
                  "the system reads no default " + Quoted(name) + Suggestion(DefaultsKeys(), name));
  } else if (value.type() != Json::objectValue) {
    findings.Error(place, "\"methods\" must be an object with attributes");
  } else {
    CheckAttributes(source, member.text, true, findings);
  }
}

}  // namespace

void CheckDefaults(const std::string& name, const std::string& shown, Findings& findings) {
  std::string text;
  if (!ReadJsonObject(name, shown, text, findings)) {
    return;
  }
  const JsonSource source{shown, text};
  CheckJsonValues(source, findings);
  const std::size_t begin = JSON::SkipBlanks(text, 0, JSON::Comments::kAllowed);
  for (const Member& member : ChildrenOf(source.text.substr(begin))) {
    CheckMember(source, member, findings);
  }
}

}  // namespace ORBO::tool
