#include "Arguments.h"
#include "json_view.h"
#include "output.h"
#include "task_view.h"

namespace ORBO::tool {
namespace {

constexpr Option kOptions[] = {kNoMoreOptions};

constexpr char kDetails[] =
    "\n"
    "The status is JSON: the last result that the task has set, and \"finish\",\n"
    "\"auto_remove\" and \"info\".\n"
    "\n"
    "Examples:\n"
    "  webapi task status alice/checksum_Uq2v\n";

ExitCode Run(const Arguments& arguments) {
  Json::Value status;
  if (!MayReadTasks() || !LoadTask(arguments.operands().front(), status)) {
    return kFailed;
  }
  return PrintDocument(status) ? kDone : kFailed;
}

}  // namespace

const Command kTaskStatus = {
    "status", "Shows the status of a task", "ID", 1, 1, kOptions, kDetails, Run, nullptr};

}  // namespace ORBO::tool
