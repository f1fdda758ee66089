#include <ctime>
#include <vector>

#include "Arguments.h"
#include "Table.h"
#include "output.h"
#include "platform/linux/token_key.h"
#include "platform/linux/token_store.h"
#include "platform/linux/token_text.h"
#include "time_text.h"
#include "token_scope.h"

namespace ORBO::tool {
namespace {

constexpr Option kOptions[] = {kJsonOption, kNoMoreOptions};

constexpr char kDetails[] =
    "\n"
    "Examples:\n"
    "  webapi token list\n"
    "  webapi token list --json\n";

bool HasExpired(const AccessToken& token, std::int64_t now) {
  return token.expires != 0 && now >= token.expires;
}

std::string ExpiryText(const AccessToken& token, std::int64_t now) {
  if (token.expires == 0) {
    return "never";
  }
  return TimeText(token.expires) + (HasExpired(token, now) ? " (expired)" : "");
}

std::string ScopesText(const AccessToken& token) {
  std::string text;
  for (const TokenScope& scope : token.scopes) {
    text.append(text.empty() ? "" : " ").append(ScopeText(scope));
  }
  return text;
}

Json::Value ToJson(const AccessToken& token, std::int64_t now) {
  Json::Value object(Json::objectValue);
  object["id"] = token.id;
  object["user"] = token.user;
  object["note"] = token.note;
  object["scopes"] = ScopesToJson(token.scopes);
  object["created"] = Json::Int64{token.created};
  object["expires"] = token.expires == 0 ? Json::Value() : Json::Value(Json::Int64{token.expires});
  object["expired"] = HasExpired(token, now);
  return object;
}

ExitCode Run(const Arguments& arguments) {
  if (!MayRead(TokenDirectory(), "read the tokens")) {
    return kFailed;
  }
  const std::int64_t now = std::time(nullptr);
  const std::vector<AccessToken> tokens = ListTokens();
  if (arguments.Has("json")) {
    Json::Value list(Json::arrayValue);
    for (const AccessToken& token : tokens) {
      list.append(ToJson(token, now));
    }
    return PrintJson(list);
  }
  Table table({"ID", "USER", "APIS", "CREATED", "EXPIRES", "NOTE"});
  for (const AccessToken& token : tokens) {
    table.Add({token.id, token.user, ScopesText(token), TimeText(token.created),
               ExpiryText(token, now), token.note});
  }
  return Print(table.ToText(HasColours())) ? kDone : kFailed;
}

}  // namespace

const Command kTokenList = {"list", "Lists the access tokens", "", 0, 0, kOptions, kDetails, Run,
                            nullptr};

}  // namespace ORBO::tool
