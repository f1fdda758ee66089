#pragma once

#include <string>

namespace ORBO {

enum class PasswordResult {
  kAccepted,
  kRefused,
  kUnavailable,  // nobody's password can be checked: missing module, wrong rights
};

// Checks a password by the means that platform.conf names under `auth`: "file",
// the password file of the system (the default), or "pam", the service "webapi".
// The means live in a module that is opened on first use.  Takes about as long
// for an unknown user as for a wrong password.
PasswordResult CheckPassword(const std::string& user, const std::string& password,
                             const std::string& remote_address);

// Sets the password of `user` in the password file; an empty one removes the
// user.  False, with `errno` set, on failure.
bool SetFilePassword(const std::string& user, const std::string& password);

}  // namespace ORBO
