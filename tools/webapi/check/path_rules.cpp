#include "check/path_rules.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>
#include <vector>

namespace ORBO::tool {
namespace {

namespace fs = std::filesystem;

// As many as the system follows.
constexpr int kMostLinks = 40;

// Puts the steps of a path in front of those that are left; the next one stands last.
void AddSteps(const fs::path& path, std::vector<fs::path>& steps) {
  const std::vector<fs::path> added(path.begin(), path.end());
  steps.insert(steps.end(), added.rbegin(), added.rend());
}

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
  if (lstat(path.c_str(), &status) != 0) {
    return true;
  }
  if (status.st_uid != 0 && status.st_uid != geteuid()) {
    findings_.Warn({path}, "belongs to " + NameOf(status.st_uid) +
                               ", who may change what runs with the web server's rights");
    return false;
  }
  if (S_ISLNK(status.st_mode)) {
    return true;
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

bool PathCheck::Judge(const std::string& path) {
  if (safe_.count(path) == 0 && unsafe_.count(path) == 0) {
    (CheckOne(path) ? safe_ : unsafe_).insert(path);
  }
  return safe_.count(path) != 0;
}

bool PathCheck::Check(const std::string& path) {
  std::error_code error;
  std::vector<fs::path> steps;
  AddSteps(fs::absolute(path, error), steps);
  fs::path place;
  int links = 0;
  bool is_safe = true;
  while (!steps.empty()) {
    const fs::path step = steps.back();
    steps.pop_back();
    if (step.empty() || step == ".") {
      continue;
    }
    const fs::path next = step == ".." ? place.parent_path() : place / step;
    is_safe = Judge(next) && is_safe;
    const fs::path target = fs::read_symlink(next, error);
    if (error) {
      place = next;
    } else if (++links <= kMostLinks) {
      AddSteps(target, steps);
    }
  }
  return is_safe;
}

}  // namespace ORBO::tool
