#include "Command.h"

namespace ORBO::tool {
namespace {

constexpr const Command* kCommands[] = {&kKeyList, &kKeyRotate, nullptr};

constexpr char kDetails[] =
    "\n"
    "Clients encipher parameters for the current key, which the API ORBO.ParameterKey\n"
    "tells them.  The first call makes one.\n"
    "\n"
    "Examples:\n"
    "  webapi key list\n"
    "  webapi key rotate\n";

}  // namespace

const Command kKey = {"key",      "Lists and replaces the keys that clients encipher for",
                      "COMMAND",  1,
                      kAnyNumber, nullptr,
                      kDetails,   nullptr,
                      kCommands};

}  // namespace ORBO::tool
