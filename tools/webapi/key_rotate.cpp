#include <cerrno>

#include "Arguments.h"
#include "output.h"
#include "platform/linux/parameter_key.h"

namespace ORBO::tool {
namespace {

constexpr Option kOptions[] = {kNoMoreOptions};

constexpr char kDetails[] =
    "\n"
    "Prints the new key's id.  The key before is accepted for some time\n"
    "(parameter_key_grace in platform.conf), so that clients which have it go on.\n"
    "\n"
    "Examples:\n"
    "  webapi key rotate\n";

ExitCode Run(const Arguments& /*arguments*/) {
  ParameterKey key;
  if (!RotateParameterKeys(key)) {
    return ComplainOfFailure("make a key", errno);
  }
  return Print(key.id + "\n") ? kDone : kFailed;
}

}  // namespace

const Command kKeyRotate = {
    "rotate", "Makes a new key the current one", "", 0, 0, kOptions, kDetails, Run, nullptr};

}  // namespace ORBO::tool
