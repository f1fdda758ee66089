#pragma once

#include <string>

namespace ORBO {

// Slows and locks repeated failures to log in, per user and per client address,
// with counters below /run/orbo/logins that processes share.

// Seconds until `user` may try again from `address`; 0 for now.  Reserves the
// attempt: two processes that ask at once do not both get 0 where one attempt is
// left.
int SecondsUntilLogin(const std::string& user, const std::string& address);

void NoteLoginFailure(const std::string& user, const std::string& address);
void NoteLoginSuccess(const std::string& user, const std::string& address);

}  // namespace ORBO
