#include <cerrno>
#include <cstdint>
#include <limits>

#include "Arguments.h"
#include "output.h"
#include "platform/linux/address.h"
#include "platform/linux/password_check.h"
#include "platform/linux/session_store.h"
#include "util/number_text.h"

namespace ORBO::tool {
namespace {

constexpr Option kOptions[] = {
    {"application", "NAME", "the application that the session is for"},
    {"language", "LANGUAGE", "the language of its user interface (default: enu)"},
    {"timeout", "MINUTES", "end it after this time without activity; 0 for never"},
    {"address", "IP", "the only client address from which it may be used"},
    {"skip-address-check", nullptr, "let it be used from any address"},
    kNoMoreOptions,
};

constexpr char kDetails[] =
    "\n"
    "The id, and nothing else, goes to the standard output.  No password is asked for.\n"
    "Without --timeout the session_timeout of platform.conf holds.\n"
    "\n"
    "Examples:\n"
    "  webapi session open alice --address 192.0.2.7\n"
    "  webapi session open backup --timeout 0 --skip-address-check\n";

bool ReadMinutes(const std::string& text, int& out) {
  JSON::Integer integer;
  std::int64_t minutes = 0;
  if (!JSON::ReadInteger(text, integer) || !JSON::ToSigned(integer, minutes) || minutes < 0 ||
      minutes > std::numeric_limits<int>::max()) {
    return false;
  }
  out = static_cast<int>(minutes);
  return true;
}

// Fills `session`.  False, and the reason in `complaint`, if an argument is wrong.
bool ReadSessionArguments(const Arguments& arguments, Session& session, std::string& complaint) {
  session.user = arguments.operands().front();
  session.application = arguments.Value("application", "");
  session.language = arguments.Value("language", "enu");
  session.skip_address_check = arguments.Has("skip-address-check");
  if (!IsUserName(session.user)) {
    complaint = "not a user name: " + session.user;
    return false;
  }
  const std::string timeout = arguments.Value("timeout", "");
  if (arguments.Has("timeout") && !ReadMinutes(timeout, session.timeout)) {
    complaint = "not a number of minutes: " + timeout;
    return false;
  }
  const std::string text = arguments.Value("address", "");
  Address address{};
  if (!arguments.Has("address")) {
    return true;
  }
  if (!ParseAddress(text, address)) {
    complaint = "not an IP address: " + text;
    return false;
  }
  session.address = AddressText(address);
  return true;
}

ExitCode Run(const Arguments& arguments) {
  Session session;
  std::string complaint;
  if (!ReadSessionArguments(arguments, session, complaint)) {
    return ComplainOfUsage(complaint);
  }
  std::string id;
  if (!CreateSession(session, id)) {
    return ComplainOfFailure("open a session", errno);
  }
  if (!Print(id + "\n")) {
    // Nobody knows the id.
    RemoveSession(id);
    return kFailed;
  }
  return kDone;
}

}  // namespace

const Command kSessionOpen = {
    "open", "Opens a session for a user and prints its id", "USER", 1, 1, kOptions, kDetails, Run,
    nullptr};

}  // namespace ORBO::tool
