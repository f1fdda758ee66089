#include "Command.h"

namespace ORBO::tool {
namespace {

constexpr const Command* kCommands[] = {&kTaskList, &kTaskStatus, &kTaskWatch, &kTaskStop, nullptr};

constexpr char kDetails[] =
    "\n"
    "An id is the owner, \"/\" and a short id.  The owner is a user, or @administrators\n"
    "or @users for the tasks that are shared with those.\n"
    "\n"
    "Examples:\n"
    "  webapi task list --user alice\n"
    "  webapi task watch alice/checksum_Uq2v\n"
    "  webapi task stop alice/checksum_Uq2v\n";

}  // namespace

const Command kTask = {"task",     "Lists, shows, watches and stops background tasks",
                       "COMMAND",  1,
                       kAnyNumber, nullptr,
                       kDetails,   nullptr,
                       kCommands};

}  // namespace ORBO::tool
