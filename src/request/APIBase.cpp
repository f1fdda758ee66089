#include <webapi/APIBase.h>

#include "request/section_merge.h"
#include "util/json_types.h"

namespace ORBO {

APIBase::APIBase() : root_(Json::objectValue) {}

APIBase::~APIBase() = default;

bool APIBase::HasData(const std::string& section, const std::string& key) {
  const Json::Value* data = JSON::Find(root_, section);
  return data != nullptr && JSON::Has(*data, key);
}

bool APIBase::SetData(const std::string& section, const Json::Value& value, bool string_only) {
  Json::Value* data = JSON::Find(root_, section);
  return data != nullptr && MergeSection(*data, Json::Value(value), string_only);
}

bool APIBase::SetData(const std::string& section, const std::string& key, const Json::Value& value,
                      bool string_only) {
  Json::Value* data = JSON::Find(root_, section);
  if (data == nullptr || key.empty() || (string_only && !JSON::IsString(value))) {
    return false;
  }
  return JSON::Set(*data, key, value);
}

const Json::Value& APIBase::GetData(const std::string& section, const std::string& key,
                                    const Json::Value& default_value) {
  const Json::Value* data = JSON::Find(root_, section);
  if (data == nullptr) {
    return default_value;
  }
  return key.empty() ? *data : JSON::At(*data, key, default_value);
}

bool APIBase::ClearData(const std::string& section, const std::string& key) {
  Json::Value* data = JSON::Find(root_, section);
  if (data == nullptr || section.empty()) {
    return false;
  }
  if (key.empty()) {
    *data = Json::Value(Json::objectValue);
    return true;
  }
  return JSON::Remove(*data, key);
}

}  // namespace ORBO
