#include "platform/webapi_util.h"
#include "util/json_text.h"
#include "util/read_file.h"

namespace ORBO::WebAPIUtil {

bool ReadJsonFile(const std::string& path, Json::Value& out) {
  std::string text;
  return ReadWholeFile(path, text) && JSON::Parse(text, out, JSON::Comments::kAllowed);
}

}  // namespace ORBO::WebAPIUtil
