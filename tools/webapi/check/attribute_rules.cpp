#include "check/attribute_rules.h"

#include <json/value.h>

#include <string>

#include "check/known_names.h"
#include "check/permission_rules.h"
#include "util/json_scan.h"
#include "util/json_text.h"
#include "util/json_types.h"

namespace ORBO::tool {
namespace {

void CheckSwitch(const std::string& name, const Json::Value& value, const Place& place,
                 Findings& findings) {
  if (!JSON::IsBool(value)) {
    findings.Error(place, Quoted(name) + " must be true or false; this counts as " +
                              (JSON::AsBool(value) ? "true" : "false"));
  }
}

}  // namespace

void CheckAttributes(const JsonSource& source, std::string_view text, bool checks_users,
                     Findings& findings) {
  Json::Value attributes(Json::objectValue);
  Place deferred;
  for (const Member& member : ChildrenOf(text)) {
    const std::string name = JSON::DecodeString(member.key);
    const Place place = source.At(member.key);
    Json::Value& value = attributes[name];
    JSON::Parse(member.text, value, JSON::Comments::kAllowed);
    if (!IsOneOf(MethodAttributes(), name)) {
      findings.Warn(place, "the system knows no attribute " + Quoted(name) +
                               Suggestion(MethodAttributes(), name));
    } else if (name != "allowUser") {
      CheckSwitch(name, value, place, findings);
    } else if (checks_users) {
      CheckAllowUser(value, place, findings);
    } else {
      findings.Warn(place, "allowUser has no effect with authLevel 0");
    }
    if (name == "deferUpload") {
      deferred = place;
    }
  }
  if (JSON::AsBool(JSON::At(attributes, "deferUpload")) &&
      !JSON::AsBool(JSON::At(attributes, "allowUpload"))) {
    findings.Warn(deferred, "deferUpload has no effect without allowUpload");
  }
}

}  // namespace ORBO::tool
