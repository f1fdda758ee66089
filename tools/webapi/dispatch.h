#pragma once

#include "Command.h"

namespace ORBO::tool {

// Runs the command of `root` that the arguments name.
ExitCode Dispatch(const Command& root, int argc, char** argv);

}  // namespace ORBO::tool
