#include "check/permission_rules.h"

#include "check/json_source.h"
#include "check/known_names.h"
#include "entry/auth_level.h"
#include "util/json_text.h"
#include "util/json_types.h"

namespace ORBO::tool {

void CheckAuthLevel(const Json::Value& level, const Place& place, Findings& findings) {
  switch (ToAuthLevel(level)) {
    case AuthLevel::kNone:
      findings.Warn(place, "authLevel 0: everybody may call this, without logging in");
      return;
    case AuthLevel::kOptional:
      findings.Warn(place,
                    "authLevel 2: a failed permission check is ignored; the handlers must decide "
                    "whom they serve");
      return;
    case AuthLevel::kRequired:
      if (level != Json::Value(1)) {
        findings.Error(place, "authLevel must be 0, 1 or 2; this one counts as 1");
      }
  }
}

void CheckAllowUser(const Json::Value& classes, const Place& place, Findings& findings) {
  if (classes.type() != Json::arrayValue) {
    findings.Error(place, "allowUser must be a list of user classes; this names nobody");
    return;
  }
  if (classes.empty()) {
    findings.Warn(place, "allowUser is empty: it names nobody");
  }
  for (const Json::Value& name : classes) {
    if (!JSON::IsString(name)) {
      findings.Error(place, "allowUser holds what is no text: " + JSON::ToText(name));
    } else if (!IsOneOf(UserClasses(), JSON::AsString(name))) {
      findings.Error(place, "there is no user class " + JSON::ToText(name) +
                                Suggestion(UserClasses(), JSON::AsString(name)));
    }
  }
}

}  // namespace ORBO::tool
