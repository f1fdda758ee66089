#include "Command.h"

namespace ORBO::tool {
namespace {

constexpr const Command* kCommands[] = {&kSessionOpen, &kSessionList, &kSessionShow, &kSessionClose,
                                        nullptr};

constexpr char kDetails[] =
    "\n"
    "A session's id is a secret: whoever has it acts as its user.  A handle names a\n"
    "session and opens none.\n"
    "\n"
    "Examples:\n"
    "  webapi session open alice --timeout 60\n"
    "  webapi session list --json\n"
    "  webapi session close --user alice\n";

}  // namespace

const Command kSession = {"session",  "Opens, lists and closes login sessions",
                          "COMMAND",  1,
                          kAnyNumber, nullptr,
                          kDetails,   nullptr,
                          kCommands};

}  // namespace ORBO::tool
