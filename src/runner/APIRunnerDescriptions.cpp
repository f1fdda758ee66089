#include <webapi/APIRunner.h>

#include "request/APIRequestPrivate.h"
#include "runner/DescriptionCache.h"
#include "runner/description_candidates.h"
#include "runner/description_rules.h"
#include "util/json_text.h"
#include "util/json_types.h"

namespace ORBO {
namespace {

// Adds every usable entry of `file` to `descs` as a value.
void AddEntries(const DescriptionFile& file, DescriptionDefaults& defaults, Json::Value& descs) {
  for (const DescriptionFile::Entry* entry : ValidEntries(file)) {
    Json::Value value;
    if (!JSON::Parse(entry->text, value, JSON::Comments::kAllowed)) {
      LogInvalidEntry(*entry);
      continue;
    }
    ApplyDescriptionDefaults(value, defaults);
    JSON::Set(descs, entry->api, std::move(value));
  }
}

}  // namespace

bool APIRunner::InitLibDesc(Json::Value& descs) {
  const std::vector<std::string> names = DescriptionFileNames();
  for (const std::string& name : names) {
    if (const auto file = DescriptionFile::Read(name)) {
      AddEntries(*file, *defaults_, descs);
    }
  }
  return !names.empty();
}

bool APIRunner::InitLibDesc(Json::Value& descs, const std::string& api) {
  if (api.empty()) {
    return false;
  }
  if (JSON::Has(descs, api)) {
    return true;
  }
  const std::string path = FindDescriptionFile(api);
  if (path.empty()) {
    return false;
  }
  const auto file = ReadDescriptionFile(path);
  if (file == nullptr) {
    return false;
  }
  AddEntries(*file, *defaults_, descs);
  return true;
}

bool APIRunner::InitLibDesc(Json::Value& descs, APIRequest* request) {
  return request != nullptr && InitLibDesc(descs, request->GetAPIClass());
}

bool APIRunner::CheckLibDescription(Json::Value& entry) { return IsValidDescription(entry); }

Json::Value& APIRunner::ApplyLibDef(Json::Value& entry) {
  ApplyDescriptionDefaults(entry, *defaults_);
  return entry;
}

const Json::Value& APIRunner::GetMethod(const std::string& api, int version,
                                        const std::string& method) {
  return descs_->MethodAttributes(api, version, method);
}

bool APIRunner::GetMethodAttr(const std::string& api, int version, const std::string& method,
                              const std::string& attr) {
  return descs_->IsMethodAttributeSet(api, version, method, attr);
}

bool APIRunner::GetMethodAttr(APIRequest* request, const std::string& attr) {
  if (request == nullptr || attr.empty()) {
    return false;
  }
  const APIRequestPrivate& call = *request->private_;
  return GetMethodAttr(call.api(), call.version(), call.method(), attr);
}

bool APIRunner::AddAPIInfo(APIRequest* request) {
  if (request == nullptr) {
    return false;
  }
  APIRequestPrivate& call = *request->private_;
  const Json::Value* info = descs_->Info(call.api());
  if (info == nullptr) {
    return false;
  }
  call.InitAPIInfo(*info);
  call.SetDeferredMethods(descs_->MethodsText(call.api()));
  return true;
}

}  // namespace ORBO
