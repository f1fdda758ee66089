#pragma once

#include <sys/types.h>

namespace ORBO {

inline constexpr uid_t kNoUser = static_cast<uid_t>(-1);
inline constexpr gid_t kNoGroup = static_cast<gid_t>(-1);

// The id of the user or group `name`; kNoUser or kNoGroup if the name service
// knows none, or `name` is null or empty.
uid_t UserId(const char* name);
gid_t GroupId(const char* name);

struct Account {
  uid_t user = kNoUser;
  gid_t group = kNoGroup;  // the primary one
};

// Looks the account of the user `name` up.  False, and `out` unchanged, if there
// is none.
bool FindAccount(const char* name, Account& out);

// Whether the user `name`, whose account is `account`, belongs to the group `group`.
bool IsInGroup(const char* name, const Account& account, const char* group);

}  // namespace ORBO
