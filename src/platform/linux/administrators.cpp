#include <algorithm>
#include <string>
#include <vector>

#include "platform/linux/fact_cache.h"
#include "platform/linux/name_service.h"
#include "platform/linux/platform_conf.h"
#include "platform/users.h"

namespace {

constexpr char kDefaultGroup[] = "administrators";

bool IsNamed(const std::string& list, const std::string& user) {
  const std::vector<std::string> names = ORBO::SplitSetting(list);
  return std::find(names.begin(), names.end(), user) != names.end();
}

// Whether the user's account makes an administrator.
bool HasAccountOf(const std::string& user, const std::string& group) {
  return ORBO::CachedFact("administrator\n" + group + "\n" + user, [&] {
    ORBO::Account account;
    return ORBO::FindAccount(user.c_str(), account) &&
           (account.user == 0 || ORBO::IsInGroup(user.c_str(), account, group.c_str()));
  });
}

}  // namespace

int QLIBGroupIsAdminGroupMem(const char* user, int /*flags*/) {
  if (user == nullptr) {
    return -1;
  }
  if (*user == '\0') {
    return 0;
  }
  const std::vector<std::string> settings =
      ORBO::PlatformSettings({"administrators", "administrators_group"});
  // Those named by the configuration need no account.
  return IsNamed(settings[0], user) ||
                 HasAccountOf(user, settings[1].empty() ? kDefaultGroup : settings[1])
             ? 1
             : 0;
}
