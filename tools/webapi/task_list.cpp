#include "Arguments.h"
#include "Table.h"
#include "output.h"
#include "task_view.h"
#include "util/json_types.h"

namespace ORBO::tool {
namespace {

constexpr Option kOptions[] = {
    {"user", "NAME", "only the tasks of this owner"}, kJsonOption, kNoMoreOptions};

constexpr char kDetails[] =
    "\n"
    "Examples:\n"
    "  webapi task list\n"
    "  webapi task list --user @users --json\n";

// What the task does: the call that has started it.
std::string CallText(const Json::Value& status) {
  const Json::Value& info = JSON::At(status, "info");
  return JSON::AsString(JSON::At(info, "api")) + " " + JSON::AsString(JSON::At(info, "method"));
}

ExitCode Run(const Arguments& arguments) {
  if (!MayReadTasks()) {
    return kFailed;
  }
  Table table({"ID", "STATE", "PROGRESS", "CALL"});
  Json::Value list(Json::arrayValue);
  for (const std::string& id : TaskIds(arguments.Value("user", ""))) {
    Json::Value status;
    if (!LoadTask(id, status)) {
      continue;
    }
    table.Add({id, TaskState(status), PercentText(TaskProgress(status)), CallText(status)});
    status["id"] = id;
    list.append(status);
  }
  if (arguments.Has("json")) {
    return PrintJson(list);
  }
  return Print(table.ToText(HasColours())) ? kDone : kFailed;
}

}  // namespace

const Command kTaskList = {
    "list", "Lists the tasks that are on record", "", 0, 0, kOptions, kDetails, Run, nullptr};

}  // namespace ORBO::tool
