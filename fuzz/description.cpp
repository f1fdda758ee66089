// Description files: the first line is the defaults file, all after it the description
// file.  What is looked up in the text is what the values say that are built from it.

#include <webapi/APIRunner.h>

#include <set>
#include <string>

#include "entry/auth_level.h"
#include "request/user_class.h"
#include "runner/DescriptionCache.h"
#include "runner/description_rules.h"
#include "support/scratch.h"
#include "support/target.h"
#include "util/WorkingDirectoryGuard.h"
#include "util/json_text.h"
#include "util/json_types.h"
#include "util/paths.h"

namespace ORBO {
namespace {

constexpr JSON::Comments kComments = JSON::Comments::kAllowed;
constexpr std::size_t kMostNames = 12;

using Entry = DescriptionFile::Entry;

void CheckUsers(const Json::Value& classes) {
  const int mask = UserClassMask(classes);
  for (const UserClassBit& row : kUserClassBits) {
    Require(((mask & row.bit) != 0) == ContainsUserClass(classes, std::string(row.name)));
  }
}

// What is looked up attribute by attribute is what the attributes say as a whole.
void CheckMethod(DescriptionCache& cache, DescriptionDefaults& defaults, const std::string& api,
                 int version, const std::string& method, const Json::Value& entry) {
  const Json::Value& attributes = cache.MethodAttributes(api, version, method);
  Require(&attributes == &cache.MethodAttributes(api, version, method));
  const Json::Value& list = JSON::At(JSON::At(entry, "methods"), std::to_string(version));
  Require(cache.IsMethodListed(api, version, method) || attributes == defaults.Get("methods"));
  Require(JSON::SearchArrayIndex(list, method) == Json::Value::maxUInt ||
          cache.IsMethodListed(api, version, method));
  for (const char* const key : {"allowUpload", "allowUser", "authLevel", "none"}) {
    Json::Value value;
    const bool is_found = cache.FindMethodAttribute(api, version, method, key, value);
    const bool is_set = cache.IsMethodAttributeSet(api, version, method, key);
    CheckUsers(value);
    // Where a number in it fits no value there is no entry.
    if (!JSON::IsNull(entry)) {
      Require(is_found == JSON::Has(attributes, key) && value == JSON::At(attributes, key));
      const Json::Value& said = JSON::IsObject(attributes) ? attributes : defaults.Get("methods");
      Require(is_set == JSON::AsBool(JSON::At(said, key)));
    }
  }
}

void CheckEntry(DescriptionCache& cache, DescriptionDefaults& defaults, const Entry& entry,
                const Json::Value& loaded) {
  Json::Value value;
  const bool is_usable = IsValidDescription(entry);
  const bool has_value = JSON::Parse(entry.text, value, kComments);
  Require(!has_value || IsValidDescription(value) == is_usable);
  Require(cache.Has(entry.api) == is_usable &&
          JSON::Has(loaded, entry.api) == (is_usable && has_value));
  if (!is_usable) {
    Require(cache.Info(entry.api) == nullptr && cache.MethodsText(entry.api).text.empty());
    return;
  }
  Json::Value info = *cache.Info(entry.api);
  const Json::Value& level = JSON::At(info, "authLevel");
  Require(ToAuthLevel(level) == AuthLevel::kRequired || JSON::IsInt(level));
  CheckUsers(JSON::At(info, "allowUser"));
  Require(JSON::Parse(cache.MethodsText(entry.api).text, info["methods"], kComments) || !has_value);
  const Json::Value* const said = JSON::Find(loaded, entry.api);
  Require(said == nullptr || *said == info);

  std::set<int> versions = {-1, 1};
  for (const DescriptionFile::Version& version : entry.versions) {
    versions.insert(JSON::AsInt(JSON::DecodeString(version.name)));
  }
  std::set<std::string> names = {"none", ""};
  for (const DescriptionFile::Method& method : entry.methods) {
    if (!method.name.empty() && names.size() < kMostNames) {
      names.insert(JSON::DecodeString(method.name));
    }
  }
  for (const int version : versions) {
    for (const std::string& name : names) {
      CheckMethod(cache, defaults, entry.api, version, name, JSON::At(loaded, entry.api));
    }
  }
}

}  // namespace

void TestInput(FuzzInput input) {
  EnterScratchRoot();
  const std::string directory(kWebAPIDirectory);
  WriteScratch(directory + kDefaultsFile, input.TakeLine());
  WriteScratch(directory + "A.lib", input.TakeRest());
  const WorkingDirectoryGuard inside(RootedPath(kWebAPIDirectory));

  DescriptionDefaults defaults;
  defaults.Read(kDefaultsFile);
  DescriptionCache cache(defaults);
  APIRunner runner;
  Json::Value loaded(Json::objectValue);
  const auto file = DescriptionFile::Read("A.lib");
  Require(cache.Load("A") == (file != nullptr));
  Require(runner.InitLibDesc(loaded, "A") == (file != nullptr));
  if (file != nullptr) {
    for (const Entry& entry : file->entries()) {
      CheckEntry(cache, defaults, entry, loaded);
    }
  }
}

}  // namespace ORBO
