#pragma once

#include <string>

namespace ORBO {

// Slows and locks repeated failures to log in, per user and per client address,
// with counters below /run/orbo/logins that processes share.
//
// Failures of a user up to half of `login_attempts` (platform.conf, default 5) are
// free, the next ones are followed by a wait of 1, 2, 4, ... up to 30 seconds, and
// from `login_attempts` on every one by `login_lock_minutes` (default 5).  For an
// address it is `login_address_attempts` (default 20); the addresses of one IPv6
// network of 64 bits count as one.  Failures are forgotten when twice the lock time
// has passed without another one.

// Seconds until `user` may try again from `address`; 0 for now.  Reserves the
// attempt: two processes that ask at once do not both get 0 where one attempt is
// left.  An attempt counts as failed until one of the operations below tells
// otherwise, so that a process that dies gains nothing.  Where the counters cannot
// be used nobody may try.
int SecondsUntilLogin(const std::string& user, const std::string& address);

// The reserved attempt failed.  True if this locked the user or the address.
bool NoteLoginFailure(const std::string& user, const std::string& address);
// It succeeded.  Clears the user's counter; the address's counter keeps what others
// did, or an own account would give new attempts at those of others.
void NoteLoginSuccess(const std::string& user, const std::string& address);
// It was not judged at all.
void NoteLoginAbandoned(const std::string& user, const std::string& address);

}  // namespace ORBO
