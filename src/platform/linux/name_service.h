#pragma once

#include <sys/types.h>

namespace ORBO {

inline constexpr uid_t kNoUser = static_cast<uid_t>(-1);
inline constexpr gid_t kNoGroup = static_cast<gid_t>(-1);

// The id of the user or group `name`; kNoUser or kNoGroup if the name service
// knows none, or `name` is null or empty.
uid_t UserId(const char* name);
gid_t GroupId(const char* name);

}  // namespace ORBO
