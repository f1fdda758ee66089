#pragma once

#include <cstddef>

// Access tokens: secrets that stand for a user in calls of some APIs.

// Checks `token` for a call of `method` of `api`, and writes the name of its user
// into `user` of `size` bytes.  0 or more when it is granted, negative when it is
// refused; `user` is empty then.
int OrboAccessTokenGrant(const char* token, const char* api, const char* method, char* user,
                         std::size_t size);
