#include "platform/linux/session_text.h"

#include <json/value.h>

#include <algorithm>
#include <utility>

#include "util/json_cursor.h"
#include "util/json_scan.h"
#include "util/json_text.h"
#include "util/number_text.h"

namespace ORBO {
namespace {

// With its end it fits the buffers that callers of the platform have.
constexpr std::size_t kLongestUser = 492;

// Each reads the text of a JSON value.  False if it has the wrong type.
bool Read(std::string_view text, std::string& out) {
  if (text.front() != '"') {
    return false;
  }
  out = JSON::DecodeString(text);
  return true;
}

bool Read(std::string_view text, bool& out) {
  out = text == "true";
  return out || text == "false";
}

template <typename Number>
bool Read(std::string_view text, Number& out) {
  JSON::Integer integer;
  std::int64_t number = 0;
  if (!JSON::ReadInteger(text, integer) || !JSON::ToSigned(integer, number)) {
    return false;
  }
  out = static_cast<Number>(number);
  return static_cast<std::int64_t>(out) == number;
}

// Where the text of the member `key`, a quoted name, is kept; null if it is none.
std::string* FindText(std::string_view key, Session& session) {
  static constexpr struct {
    char name[12];
    std::string Session::*text;
  } kRows[] = {{"user", &Session::user},
               {"address", &Session::address},
               {"application", &Session::application},
               {"webapi", &Session::webapi},
               {"language", &Session::language}};
  for (const auto& row : kRows) {
    if (JSON::QuotedEquals(key, row.name)) {
      return &(session.*row.text);
    }
  }
  return nullptr;
}

// Members of other names are none of this version's.
bool ReadMember(std::string_view key, std::string_view value, Session& session) {
  if (std::string* const text = FindText(key, session)) {
    return Read(value, *text);
  }
  if (JSON::QuotedEquals(key, "skipAddressCheck")) {
    return Read(value, session.skip_address_check);
  }
  if (JSON::QuotedEquals(key, "timeout")) {
    return Read(value, session.timeout);
  }
  return !JSON::QuotedEquals(key, "created") || Read(value, session.created);
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
  Session session;
  // To build values of the members would cost as much as all the rest of a session's
  // check.
  const bool is_read =
      JSON::ForEachMember(text, [&session](std::string_view key, std::string_view value) {
        return ReadMember(key, value, session);
      });
  if (!is_read || !IsStorableUser(session.user)) {
    return false;
  }
  out = std::move(session);
  return true;
}

}  // namespace ORBO
