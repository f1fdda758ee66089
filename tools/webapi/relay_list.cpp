#include "Arguments.h"
#include "Table.h"
#include "output.h"
#include "relay_view.h"

namespace ORBO::tool {
namespace {

constexpr Option kOptions[] = {kJsonOption, kNoMoreOptions};

constexpr char kDetails[] =
    "\n"
    "Nothing is sent to them: \"webapi relay test\" does that.  Tokens are not shown.\n"
    "\n"
    "Examples:\n"
    "  webapi relay list\n"
    "  webapi relay list --json\n";

std::string UsersText(const RelayTarget& target) {
  std::string text;
  for (const std::string& name : target.users) {
    text.append(text.empty() ? "" : " ").append(name);
  }
  return text.empty() ? "administrators" : text;
}

Json::Value ToJson(const ListedTarget& listed) {
  Json::Value object(Json::objectValue);
  object["id"] = Json::Int64{listed.id};
  object["problem"] = listed.problem;
  if (listed.problem.empty()) {
    const RelayTarget& target = listed.target;
    object["url"] = target.url;
    object["verified"] = target.is_verified && target.url.rfind("https:", 0) == 0;
    object["ca"] = target.authority;
    object["pin"] = target.pin;
    object["users"] = Json::Value(Json::arrayValue);
    for (const std::string& name : target.users) {
      object["users"].append(name);
    }
    object["timeout"] = Json::Int64{target.timeout};
    object["upload_timeout"] = Json::Int64{target.upload_timeout};
    object["max_answer_size"] = Json::UInt64{target.max_answer_size};
  }
  return object;
}

ExitCode Run(const Arguments& arguments) {
  std::vector<ListedTarget> targets;
  if (!LoadTargets(targets)) {
    return kFailed;
  }
  if (arguments.Has("json")) {
    Json::Value list(Json::arrayValue);
    for (const ListedTarget& listed : targets) {
      list.append(ToJson(listed));
    }
    return PrintJson(list);
  }
  Table table({"ID", "URL", "TRUST", "USERS", "PROBLEM"});
  for (const auto& [id, target, problem] : targets) {
    if (problem.empty()) {
      table.Add({std::to_string(id), target.url, TrustText(target), UsersText(target), ""});
    } else {
      table.Add({std::to_string(id), "", "", "", problem});
    }
  }
  return Print(table.ToText(HasColours())) ? kDone : kFailed;
}

}  // namespace

const Command kRelayList = {"list", "Lists the targets", "", 0, 0, kOptions, kDetails, Run,
                            nullptr};

}  // namespace ORBO::tool
