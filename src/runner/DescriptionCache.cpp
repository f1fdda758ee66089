#include "runner/DescriptionCache.h"

#include <cerrno>
#include <utility>

#include "runner/description_candidates.h"
#include "runner/description_rules.h"
#include "runner/method_lookup.h"
#include "util/json_cursor.h"
#include "util/json_text.h"
#include "util/json_types.h"
#include "util/log.h"
#include "util/log_text.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "APIRunner.cpp";
constexpr JSON::Comments kComments = JSON::Comments::kAllowed;

}  // namespace

std::string FindDescriptionFile(const std::string& api) {
  std::string path = ExistingCandidate(api);
  if (path.empty() && !api.empty()) {
    Log(LOG_ERR, "%s:%d WebAPI %s is not valid", kSource, __LINE__, LogText(api).c_str());
  }
  return path;
}

std::unique_ptr<DescriptionFile> ReadDescriptionFile(const std::string& path) {
  errno = 0;
  std::unique_ptr<DescriptionFile> file = DescriptionFile::Read(path);
  if (file == nullptr) {
    Log(LOG_ERR, "%s:%d WebAPI description file %s is not valid", kSource, __LINE__, path.c_str());
  }
  return file;
}

void LogInvalidEntry(const DescriptionFile::Entry& entry) {
  Log(LOG_ERR, "%s:%d WebAPI description %s is not valid.", kSource, __LINE__,
      LogText(entry.api).c_str());
}

std::vector<const DescriptionFile::Entry*> ValidEntries(const DescriptionFile& file) {
  std::vector<const DescriptionFile::Entry*> valid;
  for (const DescriptionFile::Entry& entry : file.entries()) {
    if (IsValidDescription(entry)) {
      valid.push_back(&entry);
    } else {
      LogInvalidEntry(entry);
    }
  }
  return valid;
}

bool DescriptionCache::Load(const std::string& api) {
  if (Has(api)) {
    return true;
  }
  if (unusable_.count(api) != 0) {
    return false;
  }
  const std::string path = FindDescriptionFile(api);
  if (files_.count(path) != 0) {
    return true;
  }
  const std::shared_ptr<const DescriptionFile> file =
      path.empty() ? nullptr : ReadDescriptionFile(path);
  if (file == nullptr) {
    unusable_.insert(api);
    return false;
  }
  for (const DescriptionFile::Entry* entry : ValidEntries(*file)) {
    apis_[entry->api] = Description{file, entry, nullptr};
  }
  files_.emplace(path, file);
  return true;
}

const Json::Value* DescriptionCache::Info(const std::string& api) {
  const auto found = apis_.find(api);
  if (found == apis_.end()) {
    return nullptr;
  }
  Description& description = found->second;
  if (description.info == nullptr) {
    auto info = std::make_unique<Json::Value>(Json::objectValue);
    for (const JSON::Member& member : description.entry->members) {
      if (!JSON::QuotedEquals(member.key, "methods")) {
        JSON::Parse(member.text, (*info)[JSON::DecodeString(member.key)], kComments);
      }
    }
    ApplyDescriptionDefaults(*info, defaults_);
    description.info = std::move(info);
  }
  return description.info.get();
}

SharedText DescriptionCache::MethodsText(const std::string& api) const {
  const auto found = apis_.find(api);
  if (found == apis_.end()) {
    return {};
  }
  return {found->second.file, found->second.entry->Find("methods")};
}

bool DescriptionCache::IsMethodListed(const std::string& api, int version,
                                      const std::string& method) const {
  const auto found = apis_.find(api);
  return found != apis_.end() && ORBO::IsMethodListed(*found->second.entry, version, method);
}

std::string_view DescriptionCache::AttributesText(const std::string& api, int version,
                                                  const std::string& method) {
  const auto found = Load(api) ? apis_.find(api) : apis_.end();
  return found != apis_.end() ? FindMethodAttributes(*found->second.entry, version, method)
                              : std::string_view();
}

DescriptionCache::Attributes& DescriptionCache::Split(std::string_view text) {
  const auto [attributes, is_new] = attributes_.try_emplace(text.data());
  if (is_new) {
    JSON::SplitMembers(text, kComments, attributes->second.members);
  }
  return attributes->second;
}

const Json::Value& DescriptionCache::MethodAttributes(const std::string& api, int version,
                                                      const std::string& method) {
  const std::string_view text = AttributesText(api, version, method);
  if (text.empty()) {
    return defaults_.Get("methods");
  }
  Attributes& attributes = Split(text);
  if (attributes.values == nullptr) {
    // Attributes that cannot be read grant nothing, and do not become defaults.
    attributes.values = std::make_unique<Json::Value>(Json::objectValue);
    JSON::Parse(text, *attributes.values, kComments);
  }
  return *attributes.values;
}

bool DescriptionCache::FindAttribute(std::string_view text, std::string_view name,
                                     Json::Value& out) {
  if (text.empty()) {
    const Json::Value* const found = JSON::Find(defaults_.Get("methods"), name);
    if (found != nullptr) {
      out = *found;
    }
    return found != nullptr;
  }
  const std::string_view own =
      text.front() == '{' ? JSON::FindMember(Split(text).members, name) : std::string_view();
  if (own.empty()) {
    return false;
  }
  // What cannot be read stands for nothing, and not for being missing.
  if (!JSON::Parse(own, out, kComments)) {
    out = Json::Value();
  }
  return true;
}

bool DescriptionCache::FindMethodAttribute(const std::string& api, int version,
                                           const std::string& method, std::string_view name,
                                           Json::Value& out) {
  return FindAttribute(AttributesText(api, version, method), name, out);
}

bool DescriptionCache::IsMethodAttributeSet(const std::string& api, int version,
                                            const std::string& method, std::string_view name) {
  const std::string_view text = AttributesText(api, version, method);
  const bool usable = text.empty() || text.front() == '{' || text == "null";
  Json::Value value;
  return FindAttribute(usable ? text : std::string_view(), name, value) && JSON::AsBool(value);
}

}  // namespace ORBO
