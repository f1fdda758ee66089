#include "param/parameter_conversion.h"

#include "util/json_types.h"

namespace ORBO {

bool ConvertParameter(const Json::Value& json, Json::ValueType /*type*/, bool& value) {
  if (!JSON::IsBool(json)) {
    return false;
  }
  value = JSON::AsBool(json);
  return true;
}

bool ConvertParameter(const Json::Value& json, Json::ValueType /*type*/, double& value) {
  if (!JSON::IsNumeric(json)) {
    return false;
  }
  value = JSON::AsDouble(json);
  return true;
}

bool ConvertParameter(const Json::Value& json, Json::ValueType /*type*/, std::string& value) {
  if (!JSON::IsString(json)) {
    return false;
  }
  value = JSON::StringView(json);
  return true;
}

bool ConvertParameter(const Json::Value& json, Json::ValueType type, Json::Value& value) {
  if (json.type() != type) {
    return false;
  }
  value = json;
  return true;
}

}  // namespace ORBO
