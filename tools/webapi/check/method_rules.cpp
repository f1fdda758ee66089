#include "check/method_rules.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <set>

#include "check/attribute_rules.h"
#include "entry/auth_level.h"
#include "positive_number.h"
#include "runner/description_rules.h"
#include "runner/entry_api.h"
#include "util/json_scan.h"
#include "util/json_types.h"

namespace ORBO::tool {
namespace {

using Entry = DescriptionFile::Entry;

// Whether the loader finds a list under `name`; the version if so.
bool IsVersionName(const std::string& name, int& version) {
  return ReadPositiveNumber(name, version) && std::to_string(version) == name;
}

// The names in an element of a list, each with where it stands.
std::vector<Member> NamesIn(const Member& element) {
  if (element.text.front() == '"') {
    return {{element.text, {}}};
  }
  return element.text.front() == '{' ? ChildrenOf(element.text) : std::vector<Member>();
}

// The judgement of one entry's lists.
class MethodCheck {
 public:
  MethodCheck(const DescribedFile& file, const Entry& entry, const Json::Value& info,
              Findings& findings)
      : source_(file.source()),
        is_built_in_(entry.api == kEntryAPI),
        checks_users_(is_built_in_ || ToAuthLevel(JSON::At(info, "authLevel")) != AuthLevel::kNone),
        info_(info),
        has_range_(JSON::IsInt(JSON::At(info, "minVersion")) &&
                   JSON::IsInt(JSON::At(info, "maxVersion"))),
        findings_(findings) {}

  void CheckVersion(const Member& version);
  // Reports versions of the range that no list is for.
  void CheckRange(const Place& place) const;

 private:
  void CheckList(const Member& list, int version);
  void CheckElement(const Member& element, std::set<std::string>& names);
  void CheckName(const Member& method, std::set<std::string>& names);

  const JsonSource& source_;
  const bool is_built_in_;
  const bool checks_users_;
  const Json::Value& info_;
  const bool has_range_;  // otherwise that has been reported
  std::set<int> listed_;  // versions of the range that have a list
  Findings& findings_;
};

void MethodCheck::CheckVersion(const Member& version) {
  const Place place = source_.At(version.key);
  const std::string name = JSON::DecodeString(version.key);
  int number = 0;
  if (!IsVersionName(name, number)) {
    findings_.Error(place, Quoted(name) + " is no version that a call can name");
  } else if (has_range_ && !IsInVersionRange(info_, number)) {
    findings_.Error(place, "version " + name + " lies outside minVersion and maxVersion");
  } else {
    listed_.insert(number);
  }
  if (version.text.front() != '[') {
    findings_.Error(place, "version " + name + " must have a list of methods");
  } else {
    CheckList(version, number);
  }
}

void MethodCheck::CheckList(const Member& list, int version) {
  const std::vector<Member> elements = ChildrenOf(list.text);
  if (elements.empty() && version != 0) {
    findings_.Warn(source_.At(list.key), "version " + std::to_string(version) + " has no methods");
  }
  std::set<std::string> names;
  for (const Member& element : elements) {
    CheckElement(element, names);
  }
}

void MethodCheck::CheckElement(const Member& element, std::set<std::string>& names) {
  const std::vector<Member> methods = NamesIn(element);
  if (methods.empty()) {
    findings_.Error(source_.At(element.text),
                    "a method must be a name, or an object with a name and attributes");
  }
  if (methods.size() > 1) {
    const auto first =
        std::min_element(methods.begin(), methods.end(), [](const Member& a, const Member& b) {
          return JSON::DecodeString(a.key) < JSON::DecodeString(b.key);
        });
    findings_.Error(source_.At(element.text),
                    "an object must have one method; of this one's attributes only those of " +
                        Quoted(JSON::DecodeString(first->key)) + " count");
  }
  for (const Member& method : methods) {
    CheckName(method, names);
    if (!method.text.empty() && method.text.front() != '{') {
      findings_.Error(source_.At(method.key), "the attributes of a method must be an object");
    } else {
      CheckAttributes(source_, method.text, checks_users_, findings_);
    }
  }
}

void MethodCheck::CheckName(const Member& method, std::set<std::string>& names) {
  const std::string name = JSON::DecodeString(method.key);
  const Place place = source_.At(method.key);
  if (name.empty()) {
    findings_.Error(place, "a method must have a name");
  } else if (!names.insert(name).second) {
    findings_.Error(place, "the method " + Quoted(name) + " is listed a second time");
  } else if (is_built_in_ && name != kEntryMethod) {
    findings_.Error(place, "the system serves no method " + Quoted(name) + " of this API");
  }
}

void MethodCheck::CheckRange(const Place& place) const {
  if (!has_range_) {
    return;
  }
  constexpr std::int64_t kHighest = std::numeric_limits<int>::max();
  const std::int64_t highest = std::min(JSON::AsInt64(JSON::At(info_, "maxVersion")), kHighest);
  std::int64_t expected = std::max<std::int64_t>(JSON::AsInt64(JSON::At(info_, "minVersion")), 1);
  const auto report = [&](std::int64_t end) {
    if (expected < end) {
      const std::string first = std::to_string(expected);
      findings_.Warn(place, end - expected == 1 ? "there is no list of methods for version " + first
                                                : "there is no list of methods for versions " +
                                                      first + " to " + std::to_string(end - 1));
    }
  };
  for (const int version : listed_) {
    report(version);
    expected = std::int64_t{version} + 1;
  }
  report(highest + 1);
}

}  // namespace

std::vector<ListedMethod> ListedMethods(const Entry& entry) {
  std::vector<ListedMethod> methods;
  for (const Member& version : ChildrenOf(entry.Find("methods"))) {
    int number = 0;
    if (version.text.front() != '[' || !IsVersionName(JSON::DecodeString(version.key), number)) {
      continue;
    }
    for (const Member& element : ChildrenOf(version.text)) {
      for (const Member& method : NamesIn(element)) {
        methods.push_back({number, JSON::DecodeString(method.key), method.key});
      }
    }
  }
  return methods;
}

void CheckMethods(const DescribedFile& file, const Entry& entry, const Json::Value& info,
                  Findings& findings) {
  MethodCheck check(file, entry, info, findings);
  for (const Member& version : ChildrenOf(entry.Find("methods"))) {
    check.CheckVersion(version);
  }
  check.CheckRange(file.At(entry, "methods"));
}

}  // namespace ORBO::tool
