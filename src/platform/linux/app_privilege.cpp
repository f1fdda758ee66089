#include "platform/linux/app_privilege.h"

#include <algorithm>
#include <string_view>

#include "platform/linux/address.h"
#include "platform/linux/group_member.h"
#include "platform/linux/platform_conf.h"
#include "platform/users.h"
#include "util/log.h"
#include "util/paths.h"
#include "util/read_file.h"
#include "util/trim.h"

namespace {

using ORBO::Trim;

constexpr char kSource[] = "app_privilege.cpp";
constexpr char kDirectory[] = "/etc/orbo/privileges/";
constexpr std::size_t kLongestName = 128;

struct Client {
  const char* user;
  const char* address;
};

bool IsNameCharacter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '.' ||
         c == '_' || c == '-';
}

// Whether the name is a plain file name that is not hidden.
bool IsPrivilegeName(std::string_view name) {
  return !name.empty() && name.size() <= kLongestName && name[0] != '.' &&
         std::all_of(name.begin(), name.end(), IsNameCharacter);
}

// Takes the first word off the line; "" at its end.
std::string TakeWord(std::string_view& line) {
  line = Trim(line);
  const std::string_view word = line.substr(0, line.find_first_of(" \t"));
  line.remove_prefix(word.size());
  return std::string(word);
}

// Whether the rest of a line names the client's address, or none at all.
bool IsFrom(std::string_view ranges, const char* text, const char* privilege) {
  ORBO::Address address;
  return Trim(ranges).empty() ||
         (text != nullptr && ORBO::ParseAddress(text, address) &&
          ORBO::ContainAddress(ORBO::SplitSetting(ranges), address, privilege));
}

// Whether the line grants the privilege to the client.
bool Grants(std::string_view line, const Client& client, const char* privilege) {
  const std::string kind = TakeWord(line);
  if (kind.empty() || kind[0] == '#') {
    return false;
  }
  if (kind == "everyone") {
    return IsFrom(line, client.address, privilege);
  }
  const std::string name = TakeWord(line);
  if ((kind != "user" && kind != "group") || name.empty()) {
    ORBO::Log(LOG_ERR, "%s:%d %s: a line is of no known kind", kSource, __LINE__, privilege);
    return false;
  }
  return (kind == "user" ? name == client.user : ORBO::IsGroupMember(client.user, name)) &&
         IsFrom(line, client.address, privilege);
}

}  // namespace

std::string ORBO::PrivilegeFile(std::string_view name) {
  return IsPrivilegeName(name) ? RootedPath(kDirectory).append(name) : "";
}

int QLIBAppPrivUserHas(const char* user, const char* privilege, const char* remote_ip) {
  std::string text;
  if (user == nullptr || *user == '\0' || privilege == nullptr ||
      ORBO::PrivilegeFile(privilege).empty() ||
      !ORBO::ReadWholeFile(ORBO::PrivilegeFile(privilege), text)) {
    return 0;
  }
  std::string_view rest = text;
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    if (Grants(line, {user, remote_ip}, privilege)) {
      return 1;
    }
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
  }
  return 0;
}
