#include "request/cookie_line.h"

#include "platform/webapi_util.h"
#include "util/json_types.h"

namespace ORBO {

void ParseCookieLine(const std::string& line, Json::Value& cookies) {
  const Json::Value pieces = WebAPIUtil::ParseToArray(line, ";");
  for (const Json::Value& piece : pieces) {
    const std::string text = JSON::AsString(piece);
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos) {
      continue;
    }
    JSON::Set(cookies, text.substr(0, equals),
              WebAPIUtil::URLDecode(text.substr(equals + 1), true));
  }
}

}  // namespace ORBO
