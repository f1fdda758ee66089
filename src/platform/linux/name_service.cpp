#include "platform/linux/name_service.h"

#include <grp.h>
#include <pwd.h>

#include <algorithm>
#include <cerrno>
#include <vector>

namespace ORBO {
namespace {

constexpr std::size_t kFirstSize = 1024;
// Groups of many thousand members still fit.
constexpr std::size_t kLargestSize = std::size_t{4} << 20;
constexpr int kFirstGroups = 64;
// NGROUPS_MAX of the kernel.
constexpr int kMostGroups = 65536;

// Asks by one of the get..nam_r operations, with a buffer that grows as far as
// the entry needs.  Null if there is no entry.
template <typename Entry>
const Entry* LookUp(int (*ask)(const char*, Entry*, char*, std::size_t, Entry**), const char* name,
                    Entry& entry, std::vector<char>& buffer) {
  if (name == nullptr || *name == '\0') {
    return nullptr;
  }
  for (std::size_t size = kFirstSize; size <= kLargestSize; size *= 4) {
    buffer.resize(size);
    Entry* found = nullptr;
    const int error = ask(name, &entry, buffer.data(), buffer.size(), &found);
    if (error != ERANGE && error != EINTR) {
      return error == 0 ? found : nullptr;
    }
  }
  return nullptr;
}

}  // namespace

uid_t UserId(const char* name) {
  Account account;
  return FindAccount(name, account) ? account.user : kNoUser;
}

gid_t GroupId(const char* name) {
  group entry{};
  std::vector<char> buffer;
  return LookUp(getgrnam_r, name, entry, buffer) != nullptr ? entry.gr_gid : kNoGroup;
}

bool FindAccount(const char* name, Account& out) {
  passwd entry{};
  std::vector<char> buffer;
  if (LookUp(getpwnam_r, name, entry, buffer) == nullptr) {
    return false;
  }
  out = {entry.pw_uid, entry.pw_gid};
  return true;
}

bool IsInGroup(const char* name, const Account& account, const char* group) {
  const gid_t id = GroupId(group);
  if (id == kNoGroup) {
    return false;
  }
  std::vector<gid_t> groups;
  for (int count = kFirstGroups; count <= kMostGroups; count *= 4) {
    groups.resize(static_cast<std::size_t>(count));
    int found = count;
    if (getgrouplist(name, account.group, groups.data(), &found) >= 0) {
      const auto end = groups.begin() + found;
      return std::find(groups.begin(), end, id) != end;
    }
  }
  return false;
}

}  // namespace ORBO
