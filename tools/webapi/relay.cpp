#include "Command.h"

namespace ORBO::tool {
namespace {

constexpr const Command* kCommands[] = {&kRelayList, &kRelayTest, nullptr};

constexpr char kDetails[] =
    "\n"
    "A target is a file in /etc/orbo/relay.d that is named by its id.\n"
    "\n"
    "Examples:\n"
    "  webapi relay list\n"
    "  webapi relay test 5\n";

}  // namespace

const Command kRelay = {"relay",    "Lists and tests the servers that calls are relayed to",
                        "COMMAND",  1,
                        kAnyNumber, nullptr,
                        kDetails,   nullptr,
                        kCommands};

}  // namespace ORBO::tool
