#include "Command.h"

namespace ORBO::tool {
namespace {

constexpr const Command* kCommands[] = {&kTokenCreate, &kTokenList, &kTokenRevoke, nullptr};

constexpr char kDetails[] =
    "\n"
    "A token lets a program call some APIs in a user's name without logging in.\n"
    "\n"
    "Examples:\n"
    "  webapi token create alice --api ORBO.Example.Library:list --expires 30d\n"
    "  webapi token list\n";

}  // namespace

const Command kToken = {"token",    "Creates, lists and revokes access tokens",
                        "COMMAND",  1,
                        kAnyNumber, nullptr,
                        kDetails,   nullptr,
                        kCommands};

}  // namespace ORBO::tool
