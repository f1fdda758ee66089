#include <cerrno>

#include "Arguments.h"
#include "output.h"
#include "platform/linux/token_store.h"

namespace ORBO::tool {
namespace {

constexpr Option kOptions[] = {kNoMoreOptions};

constexpr char kDetails[] =
    "\n"
    "A revoked token is refused from the next call on.\n"
    "\n"
    "Examples:\n"
    "  webapi token revoke kVw2T5cEwD0u1Yq3B\n";

ExitCode Revoke(const std::string& id) {
  errno = ENOENT;  // what has not the form of an id fails without a reason of its own
  if (RevokeToken(id)) {
    return kDone;
  }
  if (errno != ENOENT) {
    return ComplainOfFailure("revoke a token", errno);
  }
  // What was given may be a token by mistake, and is not repeated.
  Complain("no such token");
  return kFailed;
}

ExitCode Run(const Arguments& arguments) {
  ExitCode code = kDone;
  for (const std::string& id : arguments.operands()) {
    if (Revoke(id) != kDone) {
      code = kFailed;
    }
  }
  return code;
}

}  // namespace

const Command kTokenRevoke = {
    "revoke", "Revokes access tokens", "ID...", 1, kAnyNumber, kOptions, kDetails, Run, nullptr};

}  // namespace ORBO::tool
