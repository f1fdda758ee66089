#pragma once

#include <string>

namespace ORBO {

enum class PasswordResult {
  kAccepted,
  kRefused,
  kUndecided,    // what judges was out of order; the password may be wrong as well
  kUnavailable,  // nobody's password can be checked: missing module, wrong rights
};

// Whether `name` has the form of a user name: 1 to 256 bytes of UTF-8 without
// control characters, ":", "/", and blanks or "#" at its start or blanks at its
// end.
bool IsUserName(const std::string& name);

// Checks a password by the means that platform.conf names under `auth`: "file",
// the password file of the system (the default), or "pam", the service "webapi".
// The means live in a module that is opened on first use.  Takes about as long
// for an unknown user as for a wrong password.  An empty password, one with a NUL
// and one of more than 511 bytes is always refused.
PasswordResult CheckPassword(const std::string& user, const std::string& password,
                             const std::string& remote_address);

// Sets the password of `user` in the password file; an empty one removes the
// user.  False, with `errno` set, on failure: EINVAL for a name or a password that
// CheckPassword would always refuse, ENOENT if there was nobody to remove.
bool SetFilePassword(const std::string& user, const std::string& password);

}  // namespace ORBO
