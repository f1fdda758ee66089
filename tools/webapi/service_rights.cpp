#include "service_rights.h"

#include <grp.h>
#include <unistd.h>

#include "platform/linux/name_service.h"
#include "platform/linux/platform_conf.h"

namespace ORBO::tool {
namespace {

bool FindService(std::string& user, Account& account) {
  user = PlatformSetting("service_user");
  return geteuid() == 0 && FindAccount(user.c_str(), account);
}

}  // namespace

std::string ServiceUser() {
  Account account;
  std::string user;
  return FindService(user, account) ? user : "";
}

bool OpensAsRoot() { return geteuid() == 0 && ServiceUser().empty(); }

void TakeServiceRights() {
  Account account;
  std::string user;
  if (FindService(user, account) && (initgroups(user.c_str(), account.group) != 0 ||
                                     setgid(account.group) != 0 || setuid(account.user) != 0)) {
    _exit(1);
  }
}

}  // namespace ORBO::tool
