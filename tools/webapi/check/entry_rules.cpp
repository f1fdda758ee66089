#include "check/entry_rules.h"

#include <unistd.h>

#include <filesystem>
#include <limits>
#include <string>
#include <system_error>

#include "check/known_names.h"
#include "check/method_rules.h"
#include "check/permission_rules.h"
#include "entry/auth_level.h"
#include "platform/linux/app_privilege.h"
#include "runner/description_rules.h"
#include "runner/entry_api.h"
#include "util/json_scan.h"
#include "util/json_text.h"
#include "util/json_types.h"
#include "util/paths.h"

namespace ORBO::tool {
namespace {

using Entry = DescriptionFile::Entry;

// An entry that is an object, and what the rules need of it.
struct Subject {
  const DescribedFile& file;
  const Entry& entry;
  const Json::Value& info;  // with the defaults applied
  Findings& findings;

  bool HasOwn(const char* key) const { return !entry.Find(key).empty(); }
  Place At(const char* key) const { return file.At(entry, key); }
};

// What the loader refuses, in the loader's own judgement.
void CheckForLoader(const Subject& subject) {
  static constexpr struct {
    DescriptionFault fault;
    const char* key;
    const char* demand;
  } kDemands[] = {
      {kFaultyLib, "lib", "a text that is not empty"},
      {kFaultyMinVersion, "minVersion", "an integer"},
      {kFaultyMaxVersion, "maxVersion", "an integer"},
      {kFaultyMethods, "methods", "an object with a list of methods for each version"},
      {kFaultyPriority, "priority", "an integer from -10 to 10"},
  };
  const unsigned faults = DescriptionFaults(subject.entry);
  for (const auto& row : kDemands) {
    if ((faults & row.fault) != 0) {
      subject.findings.Error(
          subject.At(row.key),
          "the loader leaves this API out: " + Quoted(row.key) +
              (subject.HasOwn(row.key) ? std::string(" must be ") + row.demand : " is missing"));
    }
  }
}

void CheckNames(const Subject& subject) {
  for (const Member& member : subject.entry.members) {
    const std::string name = JSON::DecodeString(member.key);
    if (!IsOneOf(EntryKeys(), name)) {
      subject.findings.Warn(
          subject.file.source().At(member.key),
          "the system knows no member " + Quoted(name) + Suggestion(EntryKeys(), name));
    }
  }
}

void CheckTypes(const Subject& subject) {
  static constexpr struct {
    const char* key;
    Json::ValueType type;
    const char* name;
  } kTypes[] = {{"count", Json::booleanValue, "true or false"},
                {"skipTimeout", Json::booleanValue, "true or false"},
                {"requestFormat", Json::stringValue, "a text"},
                {"appPriv", Json::stringValue, "a text, the name of an application privilege"}};
  for (const auto& row : kTypes) {
    if (subject.HasOwn(row.key) && JSON::At(subject.info, row.key).type() != row.type) {
      subject.findings.Error(subject.At(row.key), Quoted(row.key) + " must be " + row.name);
    }
  }
}

void CheckRange(const Subject& subject) {
  const Json::Value& lowest = JSON::At(subject.info, "minVersion");
  const Json::Value& highest = JSON::At(subject.info, "maxVersion");
  if (!JSON::IsInt(lowest) || !JSON::IsInt(highest)) {
    return;
  }
  if (JSON::AsInt64(highest) < JSON::AsInt64(lowest)) {
    subject.findings.Error(subject.At("maxVersion"),
                           "maxVersion lies below minVersion: no version can be called");
  } else if (JSON::AsInt64(highest) < 1 ||
             JSON::AsInt64(lowest) > std::numeric_limits<int>::max()) {
    subject.findings.Error(subject.At("maxVersion"), "no version of this range can be called");
  }
}

// Whether the working directory is the one whose descriptions are served here.
bool IsServedHere() {
  std::error_code error;
  return std::filesystem::equivalent(".", RootedPath(kWebAPIDirectory), error);
}

void CheckPrivilege(const Subject& subject) {
  const std::string name = JSON::AsString(JSON::At(subject.info, "appPriv"));
  const std::string file = PrivilegeFile(name);
  if (!name.empty() && file.empty()) {
    subject.findings.Error(subject.At("appPriv"), "no application privilege can have the name " +
                                                      Quoted(name) + ": nobody may call");
  } else if (!name.empty() && IsServedHere() && access(file.c_str(), F_OK) != 0) {
    subject.findings.Warn(subject.At("appPriv"),
                          "there is no " + file + ": nobody holds the privilege");
  }
}

void CheckPermission(const Subject& subject) {
  const Json::Value& level = JSON::At(subject.info, "authLevel");
  const Json::Value& classes = JSON::At(subject.info, "allowUser");
  const bool is_checked = ToAuthLevel(level) != AuthLevel::kNone;
  if (subject.HasOwn("authLevel")) {
    CheckAuthLevel(level, subject.At("authLevel"), subject.findings);
  }
  if (subject.HasOwn("allowUser") && is_checked) {
    CheckAllowUser(classes, subject.At("allowUser"), subject.findings);
  }
  for (const char* key : {"allowUser", "appPriv"}) {
    if (subject.HasOwn(key) && !is_checked) {
      subject.findings.Warn(subject.At(key), std::string(key) + " has no effect with authLevel 0");
    }
  }
  if (is_checked && JSON::IsString(JSON::At(subject.info, "appPriv"))) {
    CheckPrivilege(subject);
  }
  if (JSON::IsNull(classes) && !subject.HasOwn("allowUser") &&
      ToAuthLevel(level) == AuthLevel::kRequired) {
    subject.findings.Warn(subject.file.At(subject.entry),
                          "there is no allowUser, here or in lib.def: nobody may call");
  }
}

}  // namespace

void CheckEntry(const DescribedFile& file, const Entry& entry, DescriptionDefaults& defaults,
                Findings& findings) {
  if (entry.text.front() != '{') {
    findings.Error(file.At(entry), "the loader leaves this API out: it must be an object");
    return;
  }
  Json::Value info;
  if (!JSON::Parse(entry.text, info, JSON::Comments::kAllowed)) {
    return;  // for a number, which has been reported
  }
  ApplyDescriptionDefaults(info, defaults);
  const Subject subject{file, entry, info, findings};
  CheckForLoader(subject);
  CheckNames(subject);
  CheckTypes(subject);
  CheckRange(subject);
  if (entry.api != kEntryAPI) {
    CheckPermission(subject);
  }
  if (entry.Find("methods").substr(0, 1) == "{") {
    CheckMethods(file, entry, info, findings);
  }
}

}  // namespace ORBO::tool
