#include "check/path_rules.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace ORBO::tool {
namespace {

std::string NameOf(uid_t user) {
  const passwd* const account = getpwuid(user);
  return account != nullptr ? account->pw_name : "user " + std::to_string(user);
}

// Whether the group is the user's first one, which holds nobody else as a rule.
bool IsOwnGroup(uid_t user, gid_t group) {
  const passwd* const account = getpwuid(user);
  return account != nullptr && account->pw_gid == group;
}

}  // namespace

bool PathCheck::CheckOne(const std::string& path) {
  struct stat status;
  if (stat(path.c_str(), &status) != 0) {
    return true;
  }
  if (status.st_uid != 0 && status.st_uid != geteuid()) {
    findings_.Warn({path}, "belongs to " + NameOf(status.st_uid) +
                               ", who may change what runs with the web server's rights");
    return false;
  }
  // In a directory with the sticky bit everybody may only change what is his own.
  const bool is_sticky = S_ISDIR(status.st_mode) && (status.st_mode & S_ISVTX) != 0;
  if ((status.st_mode & S_IWOTH) != 0 && !is_sticky) {
    findings_.Error({path}, "everybody may write here, and so act with the web server's rights");
    return false;
  }
  if ((status.st_mode & S_IWGRP) != 0 && !is_sticky && status.st_gid != 0 &&
      !IsOwnGroup(status.st_uid, status.st_gid)) {
    findings_.Warn({path}, "a group may write here, and so act with the web server's rights");
    return false;
  }
  return true;
}

bool PathCheck::Check(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path.c_str(), nullptr),
                                                             std::free);
  std::string rest = resolved != nullptr ? resolved.get() : "";
  bool is_safe = true;
  while (!rest.empty()) {
    if (safe_.count(rest) == 0 && unsafe_.count(rest) == 0) {
      (CheckOne(rest) ? safe_ : unsafe_).insert(rest);
    }
    is_safe = is_safe && unsafe_.count(rest) == 0;
    rest = rest == "/" ? "" : rest.substr(0, std::max<std::size_t>(rest.rfind('/'), 1));
  }
  return is_safe;
}

}  // namespace ORBO::tool
