#include <algorithm>
#include <string>
#include <vector>

#include "platform/linux/name_service.h"
#include "platform/linux/platform_conf.h"
#include "platform/users.h"

namespace {

// Whether platform.conf names the user itself, who then needs no account.
bool IsNamed(const std::string& user) {
  const std::vector<std::string> names =
      ORBO::SplitSetting(ORBO::PlatformSetting("administrators"));
  return std::find(names.begin(), names.end(), user) != names.end();
}

gid_t AdministratorsGroup() {
  const std::string name = ORBO::PlatformSetting("administrators_group");
  return ORBO::GroupId(name.empty() ? "administrators" : name.c_str());
}

}  // namespace

int QLIBGroupIsAdminGroupMem(const char* user, int /*flags*/) {
  if (user == nullptr) {
    return -1;
  }
  if (*user == '\0') {
    return 0;
  }
  ORBO::Account account;
  return IsNamed(user) ||
                 (ORBO::FindAccount(user, account) &&
                  (account.user == 0 || ORBO::IsInGroup(user, account, AdministratorsGroup())))
             ? 1
             : 0;
}
