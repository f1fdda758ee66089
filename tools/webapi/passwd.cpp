#include <unistd.h>

#include <cerrno>

#include "Arguments.h"
#include "TerminalPrompt.h"
#include "output.h"
#include "platform/linux/cleanse.h"
#include "platform/linux/password_check.h"
#include "platform/linux/platform_conf.h"
#include "read_line.h"

namespace ORBO::tool {
namespace {

constexpr Option kOptions[] = {
    {"stdin", nullptr, "read the password from the first line of the standard input"},
    {"remove", nullptr, "remove the user from the password file"},
    kNoMoreOptions,
};

constexpr char kDetails[] =
    "\n"
    "Without --stdin the password is asked for twice at the terminal and not shown.\n"
    "\n"
    "Examples:\n"
    "  webapi passwd alice\n"
    "  webapi passwd alice --stdin < password-file\n"
    "  webapi passwd alice --remove\n";

// What a check of passwords takes.
constexpr std::size_t kLongestPassword = 511;

// Each reads a password; false, after a complaint, if there is none to use.
bool ReadFromInput(SecretText& password) {
  if (!ReadLine(STDIN_FILENO, kLongestPassword, password.text)) {
    Complain("no password, or one of more than 511 bytes, on the standard input");
    return false;
  }
  return true;
}

bool ReadFromTerminal(SecretText& password) {
  SecretText again;
  TerminalPrompt terminal;
  if (!terminal.IsOpen()) {
    Complain("there is no terminal to ask at; use --stdin");
    return false;
  }
  if (!terminal.Ask("New password: ", kLongestPassword, password.text) ||
      !terminal.Ask("The same again: ", kLongestPassword, again.text)) {
    Complain("no password was given");
    return false;
  }
  if (password.text != again.text) {
    Complain("the two passwords differ");
    return false;
  }
  return true;
}

ExitCode RemoveUser(const std::string& user) {
  if (SetFilePassword(user, "")) {
    return kDone;
  }
  if (errno == ENOENT) {
    Complain("no password of " + user);
    return kFailed;
  }
  return ComplainOfFailure("change the password file", errno, MayRun::kRootOnly);
}

ExitCode Run(const Arguments& arguments) {
  const std::string& user = arguments.operands().front();
  if (!IsUserName(user)) {
    return ComplainOfUsage("not a user name: " + user);
  }
  if (arguments.Has("stdin") && arguments.Has("remove")) {
    return ComplainOfUsage("--stdin and --remove exclude each other");
  }
  if (arguments.Has("remove")) {
    return RemoveUser(user);
  }
  SecretText password;
  if (!(arguments.Has("stdin") ? ReadFromInput(password) : ReadFromTerminal(password))) {
    return kFailed;
  }
  // An empty one would remove the user.
  if (password.text.empty() || password.text.find('\0') != std::string::npos) {
    Complain("a password is not empty and has no NUL");
    return kFailed;
  }
  if (!SetFilePassword(user, password.text)) {
    return ComplainOfFailure("change the password file", errno, MayRun::kRootOnly);
  }
  if (PlatformSetting("auth") == "pam") {
    Complain("the password is not in use while platform.conf says auth=pam");
  }
  return kDone;
}

}  // namespace

const Command kPasswd = {
    "passwd", "Sets a user's password in the password file", "USER", 1, 1, kOptions, kDetails, Run,
    nullptr};

}  // namespace ORBO::tool
