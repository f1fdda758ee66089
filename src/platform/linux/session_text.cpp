#include "platform/linux/session_text.h"

#include <json/value.h>

#include <algorithm>
#include <utility>

#include "util/json_text.h"
#include "util/json_types.h"

namespace ORBO {
namespace {

// With its end it fits the buffers that callers of the platform have.
constexpr std::size_t kLongestUser = 492;

// Each reads a member that may be missing; `out` is unchanged then.  False if it
// has the wrong type.
bool Read(const Json::Value& object, std::string_view key, std::string& out) {
  const Json::Value* const value = JSON::Find(object, key);
  if (value != nullptr && JSON::IsString(*value)) {
    out = JSON::AsString(*value);
  }
  return value == nullptr || JSON::IsString(*value);
}

bool Read(const Json::Value& object, std::string_view key, bool& out) {
  const Json::Value* const value = JSON::Find(object, key);
  if (value != nullptr && JSON::IsBool(*value)) {
    out = JSON::AsBool(*value);
  }
  return value == nullptr || JSON::IsBool(*value);
}

template <typename Number>
bool Read(const Json::Value& object, std::string_view key, Number& out) {
  const Json::Value* const value = JSON::Find(object, key);
  if (value == nullptr) {
    return true;
  }
  const std::int64_t number = JSON::AsInt64(*value);
  out = static_cast<Number>(number);
  return JSON::IsInt(*value) && static_cast<std::int64_t>(out) == number;
}

}  // namespace

bool IsStorableUser(const std::string& name) {
  return !name.empty() && name.size() <= kLongestUser &&
         std::none_of(name.begin(), name.end(),
                      [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 0x7f; });
}

std::string ToSessionText(const Session& session) {
  Json::Value object(Json::objectValue);
  object["user"] = session.user;
  object["address"] = session.address;
  object["application"] = session.application;
  object["webapi"] = session.webapi;
  object["language"] = session.language;
  object["skipAddressCheck"] = session.skip_address_check;
  object["timeout"] = session.timeout;
  object["created"] = Json::Int64{session.created};
  return JSON::ToText(object);
}

bool FromSessionText(const std::string& text, Session& out) {
  Json::Value object;
  Session session;
  if (!JSON::Parse(text, object) || object.type() != Json::objectValue ||
      !Read(object, "user", session.user) || !Read(object, "address", session.address) ||
      !Read(object, "application", session.application) ||
      !Read(object, "webapi", session.webapi) || !Read(object, "language", session.language) ||
      !Read(object, "skipAddressCheck", session.skip_address_check) ||
      !Read(object, "timeout", session.timeout) || !Read(object, "created", session.created) ||
      !IsStorableUser(session.user)) {
    return false;
  }
  out = std::move(session);
  return true;
}

}  // namespace ORBO
