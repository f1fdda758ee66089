#include <pwd.h>
#include <unistd.h>
#include <webapi/APIRunner.h>

#include "Arguments.h"
#include "described_apis.h"
#include "json_view.h"
#include "output.h"
#include "platform/linux/password_check.h"
#include "platform/webapi_util.h"
#include "positive_number.h"
#include "util/json_types.h"

namespace ORBO::tool {
namespace {

constexpr Option kOptions[] = {
    {"version", "N", "the API's version (default: the highest that there is)"},
    {"user", "NAME", "the user to call as (default: who runs this command)"},
    kNoMoreOptions,
};

constexpr char kDetails[] =
    "\n"
    "The call runs in this process, and no permission is checked.  A value that is JSON\n"
    "is passed as that, any other as text; quote a number that is to be text: id='\"7\"'.\n"
    "The answer is indented and coloured on a terminal, and one line anywhere else.\n"
    "\n"
    "Exit codes: 0 when the call succeeds, 1 when it does not, 2 wrong usage.\n"
    "\n"
    "Examples:\n"
    "  webapi call ORBO.Example.Library list offset=2\n"
    "  webapi call ORBO.Session list --user admin\n";

// Who runs this process; "" when the name service does not know.
std::string OwnName() {
  const passwd* const account = getpwuid(geteuid());
  return account == nullptr ? "" : account->pw_name;
}

// Reads the operands after the two names as parameters, by the rule for those of a
// request.  False, and the reason in `complaint`, if one has no name.
bool ReadParameters(const std::vector<std::string>& operands, Json::Value& params,
                    std::string& complaint) {
  for (std::size_t i = 2; i < operands.size(); ++i) {
    const std::size_t equals = operands[i].find('=');
    if (equals == 0 || equals == std::string::npos) {
      complaint = "expected NAME=VALUE, not " + operands[i];
      return false;
    }
    const std::string pair = WebAPIUtil::URLEncode(operands[i].substr(0, equals)) + "=" +
                             WebAPIUtil::URLEncode(operands[i].substr(equals + 1));
    if (!WebAPIUtil::strPairToJsonObj(pair, params, true, true)) {
      complaint = "the value is too large: " + operands[i].substr(0, equals);
      return false;
    }
  }
  return true;
}

ExitCode Run(const Arguments& arguments) {
  const std::string& api = arguments.operands()[0];
  const std::string& method = arguments.operands()[1];
  const std::string user = arguments.Value("user", OwnName());
  const std::string version_text = arguments.Value("version", "");
  int version = 1;
  Json::Value params(Json::objectValue);
  std::string complaint;
  if (!IsUserName(user)) {
    return ComplainOfUsage("not a user name: " + user);
  }
  if (arguments.Has("version") && !ReadPositiveNumber(version_text, version)) {
    return ComplainOfUsage("not a version: " + version_text);
  }
  if (!ReadParameters(arguments.operands(), params, complaint)) {
    return ComplainOfUsage(complaint);
  }
  Json::Value apis;
  if (!LoadDescribedAPI(api, apis)) {
    return kFailed;
  }
  if (!arguments.Has("version")) {
    version = HighestVersion(api, apis);
  }
  Json::Value body;
  APIRunner::Exec(body, api.c_str(), version, method.c_str(), params, user.c_str());
  return PrintDocument(body) && JSON::AsBool(JSON::At(body, "success")) ? kDone : kFailed;
}

}  // namespace

const Command kCall = {"call",
                       "Calls an API in this process and prints its answer",
                       "API METHOD [NAME=VALUE...]",
                       2,
                       kAnyNumber,
                       kOptions,
                       kDetails,
                       Run,
                       nullptr};

}  // namespace ORBO::tool
