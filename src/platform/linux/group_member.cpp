#include "platform/linux/group_member.h"

#include "platform/linux/fact_cache.h"
#include "platform/linux/name_service.h"

namespace ORBO {

bool IsGroupMember(const std::string& user, const std::string& group) {
  return CachedFact("member\n" + group + "\n" + user, [&] {
    Account account;
    return FindAccount(user.c_str(), account) && IsInGroup(user.c_str(), account, group.c_str());
  });
}

}  // namespace ORBO
