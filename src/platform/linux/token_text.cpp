#include "platform/linux/token_text.h"

#include <json/value.h>

#include <algorithm>
#include <utility>

#include "platform/linux/session_text.h"
#include "util/json_text.h"
#include "util/json_types.h"

namespace ORBO {
namespace {

// Each reads a member that must be there with that type.
bool Read(const Json::Value& object, std::string_view key, std::string& out) {
  const Json::Value& value = JSON::At(object, key);
  out = JSON::AsString(value);
  return JSON::IsString(value);
}

bool Read(const Json::Value& object, std::string_view key, std::int64_t& out) {
  const Json::Value& value = JSON::At(object, key);
  out = JSON::AsInt64(value);
  return JSON::IsInt(value);
}

bool Read(const Json::Value& object, std::string_view key, std::vector<std::string>& out) {
  const Json::Value& list = JSON::At(object, key);
  if (list.type() != Json::arrayValue) {
    return false;
  }
  for (const Json::Value& element : list) {
    if (!JSON::IsString(element)) {
      return false;
    }
    out.push_back(JSON::AsString(element));
  }
  return true;
}

bool Read(const Json::Value& object, std::string_view key, std::vector<TokenScope>& out) {
  const Json::Value& list = JSON::At(object, key);
  if (list.type() != Json::arrayValue) {
    return false;
  }
  for (const Json::Value& element : list) {
    TokenScope scope;
    if (element.type() != Json::objectValue || !Read(element, "api", scope.api) ||
        !Read(element, "methods", scope.methods)) {
      return false;
    }
    out.push_back(std::move(scope));
  }
  return true;
}

bool IsStorableScope(const TokenScope& scope) {
  return !scope.api.empty() && !scope.methods.empty() &&
         std::none_of(scope.methods.begin(), scope.methods.end(),
                      [](const std::string& method) { return method.empty(); });
}

}  // namespace

bool IsStorableToken(const AccessToken& token) {
  return IsStorableUser(token.user) && !token.scopes.empty() && token.expires >= 0 &&
         std::all_of(token.scopes.begin(), token.scopes.end(), IsStorableScope);
}

Json::Value ScopesToJson(const std::vector<TokenScope>& scopes) {
  Json::Value list(Json::arrayValue);
  for (const TokenScope& scope : scopes) {
    Json::Value methods(Json::arrayValue);
    for (const std::string& method : scope.methods) {
      methods.append(method);
    }
    Json::Value entry(Json::objectValue);
    entry["api"] = scope.api;
    entry["methods"] = std::move(methods);
    list.append(std::move(entry));
  }
  return list;
}

std::string ToTokenText(const StoredToken& stored) {
  Json::Value object(Json::objectValue);
  object["hash"] = stored.hash;
  object["user"] = stored.token.user;
  object["note"] = stored.token.note;
  object["scopes"] = ScopesToJson(stored.token.scopes);
  object["created"] = Json::Int64{stored.token.created};
  object["expires"] = Json::Int64{stored.token.expires};
  return JSON::ToText(object);
}

bool FromTokenText(const std::string& text, StoredToken& out) {
  Json::Value object;
  StoredToken stored;
  AccessToken& token = stored.token;
  if (!JSON::Parse(text, object) || object.type() != Json::objectValue ||
      !Read(object, "hash", stored.hash) || !Read(object, "user", token.user) ||
      !Read(object, "note", token.note) || !Read(object, "scopes", token.scopes) ||
      !Read(object, "created", token.created) || !Read(object, "expires", token.expires) ||
      !IsStorableToken(token)) {
    return false;
  }
  out = std::move(stored);
  return true;
}

}  // namespace ORBO
