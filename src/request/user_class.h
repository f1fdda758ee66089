#pragma once

#include <json/value.h>

#include <string>
#include <string_view>

namespace ORBO {

// A user class and its bit in masks.
struct UserClassBit {
  std::string_view name;
  int bit;
};
extern const UserClassBit kUserClassBits[6];

// The mask of the user classes that `classes`, a description's "allowUser",
// names: "admin.local" 0x01, "admin.domain" 0x02, "admin.ldap" 0x04,
// "normal.local" 0x08, "normal.domain" 0x10, "normal.ldap" 0x20.  Unknown names
// and elements that are no text add nothing; what is no array gives 0.
int UserClassMask(const Json::Value& classes);

// The class of a user: "admin." or "normal.", and by the form of the name
// "domain" (it holds a backslash), "ldap" (an "@") or "local".
std::string UserClass(std::string_view user_name, bool is_admin);

// Whether the array `classes`, a description's "allowUser", holds
// `user_class`; false for what is no array.
bool ContainsUserClass(const Json::Value& classes, const std::string& user_class);

}  // namespace ORBO
