#include <algorithm>
#include <cerrno>
#include <ctime>
#include <utility>

#include "Arguments.h"
#include "output.h"
#include "platform/linux/password_check.h"
#include "platform/linux/token_store.h"
#include "time_text.h"
#include "token_scope.h"

namespace ORBO::tool {
namespace {

constexpr char kDefaultExpiry[] = "90d";

constexpr Option kOptions[] = {
    {"api", "API[:METHOD,METHOD...]", "an API that it may call; may be repeated"},
    {"expires", "TIME", "30d, 12h, a date as 2030-12-31, or never (default: 90d)"},
    {"note", "TEXT", "what it is for"},
    kNoMoreOptions,
};

constexpr char kDetails[] =
    "\n"
    "The token, and nothing else, goes to the standard output.  It is shown this once:\n"
    "only a hash of it is stored.\n"
    "\n"
    "Examples:\n"
    "  webapi token create alice --api ORBO.Example.Library:list --expires 30d --note backup\n"
    "  webapi token create alice --api ORBO.A --api ORBO.B:get,list --expires 2030-12-31\n";

constexpr std::size_t kLongestNote = 1024;

bool IsNote(const std::string& text) {
  return text.size() <= kLongestNote && std::none_of(text.begin(), text.end(), [](char c) {
           return static_cast<unsigned char>(c) < ' ' || c == 0x7f;
         });
}

// Fills `token`.  False, and the reason in `complaint`, if an argument is wrong.
bool ReadTokenArguments(const Arguments& arguments, AccessToken& token, std::string& complaint) {
  token.user = arguments.operands().front();
  token.note = arguments.Value("note", "");
  if (!IsUserName(token.user)) {
    complaint = "not a user name: " + token.user;
    return false;
  }
  for (const std::string& text : arguments.Values("api")) {
    TokenScope scope;
    if (!ReadScope(text, scope)) {
      complaint = "not an API with methods: " + text;
      return false;
    }
    token.scopes.push_back(std::move(scope));
  }
  if (token.scopes.empty()) {
    complaint = "expected --api: a token without it could call nothing";
    return false;
  }
  if (!IsNote(token.note)) {
    complaint = "the note is longer than 1024 bytes or has control characters";
    return false;
  }
  const std::string expires = arguments.Value("expires", kDefaultExpiry);
  if (!ReadExpiry(expires, std::time(nullptr), token.expires)) {
    complaint = "not a time to come: " + expires;
    return false;
  }
  return true;
}

ExitCode Run(const Arguments& arguments) {
  AccessToken token;
  std::string complaint;
  if (!ReadTokenArguments(arguments, token, complaint)) {
    return ComplainOfUsage(complaint);
  }
  std::string text;
  if (!CreateToken(token, text)) {
    return ComplainOfFailure("create a token", errno);
  }
  if (!Print(text + "\n")) {
    // Nobody knows the token.
    RevokeToken(token.id);
    return kFailed;
  }
  Complain("keep the token: it is not shown again");
  return kDone;
}

}  // namespace

const Command kTokenCreate = {"create", "Creates an access token for a user and prints it",
                              "USER",   1,
                              1,        kOptions,
                              kDetails, Run,
                              nullptr};

}  // namespace ORBO::tool
