#include "request/user_class.h"

#include <algorithm>

#include "util/json_types.h"

namespace ORBO {

const UserClassBit kUserClassBits[6] = {
    {"admin.local", 0x01},  {"admin.domain", 0x02},  {"admin.ldap", 0x04},
    {"normal.local", 0x08}, {"normal.domain", 0x10}, {"normal.ldap", 0x20},
};

namespace {

int BitOf(std::string_view name) {
  for (const UserClassBit& row : kUserClassBits) {
    if (row.name == name) {
      return row.bit;
    }
  }
  return 0;
}

}  // namespace

int UserClassMask(const Json::Value& classes) {
  int mask = 0;
  if (classes.type() == Json::arrayValue) {
    for (const Json::Value& name : classes) {
      mask |= BitOf(JSON::StringView(name));
    }
  }
  return mask;
}

std::string UserClass(std::string_view user_name, bool is_admin) {
  std::string result = is_admin ? "admin." : "normal.";
  if (user_name.find('\\') != std::string_view::npos) {
    result += "domain";
  } else if (user_name.find('@') != std::string_view::npos) {
    result += "ldap";
  } else {
    result += "local";
  }
  return result;
}

bool ContainsUserClass(const Json::Value& classes, const std::string& user_class) {
  if (classes.type() != Json::arrayValue) {
    return false;
  }
  return std::any_of(classes.begin(), classes.end(), [&](const Json::Value& name) {
    return JSON::IsString(name) && JSON::StringView(name) == user_class;
  });
}

}  // namespace ORBO
