#include "platform/webapi_util.h"
#include "util/json_text.h"
#include "util/read_file.h"
#include "util/write_file.h"

namespace ORBO::WebAPIUtil {

bool ReadJsonFile(const std::string& path, Json::Value& out) {
  std::string text;
  return ReadWholeFile(path, text) && JSON::Parse(text, out, JSON::Comments::kAllowed);
}

bool WriteJsonFile(const std::string& path, const Json::Value& value) {
  return ReplaceFile(path, JSON::ToText(value) + "\n");
}

}  // namespace ORBO::WebAPIUtil
