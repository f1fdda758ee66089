#include "Arguments.h"
#include "task_view.h"

namespace ORBO::tool {
namespace {

constexpr Option kOptions[] = {{"keep", nullptr, "keep the record for good"}, kNoMoreOptions};

constexpr char kDetails[] =
    "\n"
    "The task's process gets SIGTERM, and the task is marked finished.  Its record stays\n"
    "for a while (task_grace in platform.conf), or with --keep until somebody removes it.\n"
    "\n"
    "Examples:\n"
    "  webapi task stop alice/checksum_Uq2v\n";

ExitCode Run(const Arguments& arguments) {
  if (!MayReadTasks()) {
    return kFailed;
  }
  ExitCode code = kDone;
  for (const std::string& id : arguments.operands()) {
    if (!StopTask(id, !arguments.Has("keep"))) {
      code = kFailed;
    }
  }
  return code;
}

}  // namespace

const Command kTaskStop = {"stop",   "Stops tasks", "ID...", 1,      kAnyNumber,
                           kOptions, kDetails,      Run,     nullptr};

}  // namespace ORBO::tool
