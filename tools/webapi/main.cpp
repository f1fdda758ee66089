// webapi: what an administrator does with the system and to its state.

#include <exception>

#include "Command.h"
#include "dispatch.h"
#include "output.h"

namespace {

using ORBO::tool::Command;

constexpr const Command* kCommands[] = {&ORBO::tool::kCall,    &ORBO::tool::kList,
                                        &ORBO::tool::kSession, &ORBO::tool::kToken,
                                        &ORBO::tool::kPasswd,  &ORBO::tool::kKey,
                                        &ORBO::tool::kEncrypt, &ORBO::tool::kTask,
                                        &ORBO::tool::kNew,     nullptr};

constexpr ORBO::tool::Option kOptions[] = {
    {"version", nullptr, "print the version"},
    ORBO::tool::kNoMoreOptions,
};

constexpr char kDetails[] =
    "\n"
    "Run it as root or as the user that the CGI programs run as.  With WEBAPI_ROOT in\n"
    "the environment everything lies below that directory.\n"
    "\n"
    "Exit codes: 0 done, 1 failed or not found, 2 wrong usage.\n"
    "\n"
    "Examples:\n"
    "  webapi passwd alice\n"
    "  webapi session list\n"
    "  webapi token create alice --api ORBO.Example.Library --expires 30d\n";

constexpr Command kRoot = {
    "webapi",
    "Calls web APIs, manages their sessions, tokens, passwords, keys and tasks, and begins new "
    "ones",
    "COMMAND",
    1,
    ORBO::tool::kAnyNumber,
    kOptions,
    kDetails,
    nullptr,
    kCommands,
};

}  // namespace

int main(int argc, char** argv) {
  try {
    return ORBO::tool::Dispatch(kRoot, argc, argv);
  } catch (const std::exception& exception) {
    ORBO::tool::Complain(exception.what());
    return ORBO::tool::kFailed;
  }
}
