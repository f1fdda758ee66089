#include <vector>

#include "Arguments.h"
#include "Table.h"
#include "output.h"
#include "platform/linux/parameter_key.h"
#include "platform/linux/wall_clock.h"
#include "time_text.h"

namespace ORBO::tool {
namespace {

constexpr std::int64_t kSecond = 1000;

constexpr Option kOptions[] = {kJsonOption, kNoMoreOptions};

constexpr char kDetails[] =
    "\n"
    "A key before the current one is accepted for some time (parameter_key_grace in\n"
    "platform.conf) and then deleted.\n"
    "\n"
    "Examples:\n"
    "  webapi key list\n"
    "  webapi key list --json\n";

std::string StateText(const ParameterKey& key) {
  return key.expires == 0 ? "current" : "accepted until " + TimeText(key.expires / kSecond);
}

Json::Value ToJson(const ParameterKey& key) {
  Json::Value object(Json::objectValue);
  object["kid"] = key.id;
  object["spki"] = key.spki;
  object["created"] = Json::Int64{key.created / kSecond};
  object["expires"] =
      key.expires == 0 ? Json::Value() : Json::Value(Json::Int64{key.expires / kSecond});
  return object;
}

ExitCode Run(const Arguments& arguments) {
  if (!MayRead(ParameterKeyDirectory(), "read the keys")) {
    return kFailed;
  }
  const std::vector<ParameterKey> keys = ParameterKeys(WallClock());
  if (arguments.Has("json")) {
    Json::Value list(Json::arrayValue);
    for (const ParameterKey& key : keys) {
      list.append(ToJson(key));
    }
    return PrintJson(list);
  }
  Table table({"KID", "CREATED", "STATE"});
  for (const ParameterKey& key : keys) {
    table.Add({key.id, TimeText(key.created / kSecond), StateText(key)});
  }
  return Print(table.ToText(HasColours())) ? kDone : kFailed;
}

}  // namespace

const Command kKeyList = {"list",   "Lists the keys that are accepted, the current one first",
                          "",       0,
                          0,        kOptions,
                          kDetails, Run,
                          nullptr};

}  // namespace ORBO::tool
