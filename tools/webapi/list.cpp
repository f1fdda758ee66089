#include "Arguments.h"
#include "Table.h"
#include "described_apis.h"
#include "output.h"
#include "util/json_types.h"

namespace ORBO::tool {
namespace {

constexpr Option kOptions[] = {kJsonOption, kNoMoreOptions};

constexpr char kDetails[] =
    "\n"
    "Each line has the methods listed for one version of an API.  Entries that the\n"
    "loader leaves out are not there; the system log tells why.\n"
    "\n"
    "Examples:\n"
    "  webapi list\n"
    "  webapi list ORBO.Session --json\n";

// The names in a description's list of methods: each element is a name, or an object
// that has the name as its only member.
Json::Value MethodNames(const Json::Value& list) {
  Json::Value names(Json::arrayValue);
  if (list.type() != Json::arrayValue) {
    return names;
  }
  for (const Json::Value& element : list) {
    if (JSON::IsString(element)) {
      names.append(element);
    } else if (element.type() == Json::objectValue) {
      for (const std::string& name : element.getMemberNames()) {
        names.append(name);
      }
    }
  }
  return names;
}

Json::Value ToJson(const std::string& name, const Json::Value& description) {
  Json::Value api(Json::objectValue);
  api["api"] = name;
  api["min_version"] = JSON::At(description, "minVersion");
  api["max_version"] = JSON::At(description, "maxVersion");
  Json::Value& methods = api["methods"];
  methods = Json::Value(Json::objectValue);
  const Json::Value& lists = JSON::At(description, "methods");
  for (auto list = lists.begin(); list != lists.end(); ++list) {
    methods[list.name()] = MethodNames(*list);
  }
  return api;
}

std::string Joined(const Json::Value& names) {
  std::string text;
  for (const Json::Value& name : names) {
    text += (text.empty() ? "" : ", ") + JSON::AsString(name);
  }
  return text;
}

ExitCode PrintTable(const Json::Value& apis) {
  Table table({"API", "VERSION", "METHODS"});
  for (const Json::Value& api : apis) {
    const Json::Value& methods = api["methods"];
    for (auto list = methods.begin(); list != methods.end(); ++list) {
      table.Add({JSON::AsString(api["api"]), list.name(), Joined(*list)});
    }
  }
  return Print(table.ToText(HasColours())) ? kDone : kFailed;
}

ExitCode Run(const Arguments& arguments) {
  const std::string only = arguments.operands().empty() ? "" : arguments.operands().front();
  Json::Value descriptions;
  if (!LoadDescribedAPIs(descriptions)) {
    return kFailed;
  }
  Json::Value apis(Json::arrayValue);
  for (auto entry = descriptions.begin(); entry != descriptions.end(); ++entry) {
    if (only.empty() || only == entry.name()) {
      apis.append(ToJson(entry.name(), *entry));
    }
  }
  if (!only.empty() && apis.empty()) {
    Complain("not described: " + only);
    return kFailed;
  }
  return arguments.Has("json") ? PrintJson(apis) : PrintTable(apis);
}

}  // namespace

const Command kList = {"list",   "Lists the described APIs with their versions and methods",
                       "[API]",  0,
                       1,        kOptions,
                       kDetails, Run,
                       nullptr};

}  // namespace ORBO::tool
