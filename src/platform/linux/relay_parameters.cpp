#include "platform/linux/relay_parameters.h"

#include <algorithm>
#include <iterator>

#include "platform/webapi_util.h"
#include "util/json_text.h"
#include "util/json_types.h"

namespace ORBO {
namespace {

constexpr std::string_view kOwnParameters[] = {"api", "version", "method", "_sid", "tid"};

// A text that would be read as another value gets quotes.
bool IsPlainText(const Json::Value& value) {
  const std::string_view text = JSON::StringView(value);
  return JSON::IsString(value) && JSON::SkipValue(text, 0, JSON::Comments::kRefused) != text.size();
}

}  // namespace

bool IsOwnParameter(std::string_view name) {
  return std::find(std::begin(kOwnParameters), std::end(kOwnParameters), name) !=
         std::end(kOwnParameters);
}

void AppendRelayParameter(const std::string& name, const Json::Value& value, std::string& line) {
  line.append(line.empty() ? "" : "&").append(WebAPIUtil::URLEncode(name)).append("=");
  line += WebAPIUtil::URLEncode(IsPlainText(value) ? JSON::AsString(value) : JSON::ToText(value));
}

std::string RelayParameterLine(const RelayCall& call, const Json::Value& params,
                               const std::string& token) {
  std::string line;
  AppendRelayParameter("api", call.api, line);
  AppendRelayParameter("version", call.version, line);
  AppendRelayParameter("method", call.method, line);
  AppendRelayParameter("tid", token, line);
  for (auto param = params.begin(); param != params.end(); ++param) {
    const std::string name = param.name();
    if (!IsOwnParameter(name)) {
      AppendRelayParameter(name, *param, line);
    }
  }
  return line;
}

}  // namespace ORBO
