#include "platform/linux/password_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string_view>

#include "platform/linux/secret_file.h"
#include "util/Descriptor.h"
#include "util/paths.h"
#include "util/write_file.h"

namespace ORBO {
namespace {

constexpr char kDirectory[] = "/etc/orbo";
constexpr char kName[] = "passwords";
constexpr char kNewName[] = "passwords.new";
constexpr char kLockName[] = "passwords.lock";
constexpr mode_t kPrivate = 0600;
constexpr mode_t kGroupReads = 0640;
constexpr mode_t kPassable = 0755;
constexpr unsigned long long kLargestFile = 16ULL << 20;

// One line; the user is empty for a line about nobody.
struct Line {
  std::string_view user;
  std::string_view hash;
};

Line ParseLine(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (text.substr(0, 1) == "#" || colon == std::string_view::npos) {
    return {};
  }
  // What follows a second colon is left for later uses.
  const std::string_view rest = text.substr(colon + 1);
  return {text.substr(0, colon), rest.substr(0, rest.find(':'))};
}

// Takes the first line, without its end, off `text`.
std::string_view TakeLine(std::string_view& text) {
  const std::string_view line = text.substr(0, text.find('\n'));
  text.remove_prefix(std::min(line.size() + 1, text.size()));
  return line;
}

int OpenDirectory() {
  return open(RootedPath(kDirectory).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

bool ReadPasswords(int directory, std::string& text, struct stat& status) {
  return ReadSecretFile(directory, kName, kLargestFile, text, status);
}

// The owner and the rights of a file that does not exist yet.
struct stat FirstStatus() {
  struct stat status {};
  status.st_uid = geteuid();
  status.st_gid = getegid();
  status.st_mode = kPrivate;
  Account service;
  if (status.st_uid == 0 && FindServiceAccount(service)) {
    status.st_gid = service.group;
    status.st_mode = kGroupReads;
  }
  return status;
}

// Writes the new file beside the old one.  The caller holds the lock, so that what
// lies there can only come from a process that was killed.
bool WriteNew(int directory, std::string_view text, const struct stat& status) {
  unlinkat(directory, kNewName, 0);
  const Descriptor file(
      openat(directory, kNewName, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kPrivate));
  return file.IsOpen() && fchown(file.get(), status.st_uid, status.st_gid) == 0 &&
         fchmod(file.get(), status.st_mode & (S_IRWXU | S_IRGRP)) == 0 &&
         WriteAll(file.get(), text) && fsync(file.get()) == 0;
}

bool Replace(int directory, std::string_view text, const struct stat& status) {
  if (!WriteNew(directory, text, status) || renameat(directory, kNewName, directory, kName) != 0) {
    const int error = errno;
    unlinkat(directory, kNewName, 0);
    errno = error;
    return false;
  }
  return fsync(directory) == 0;
}

// `text` with the user's lines replaced by one with `hash`, or by none.  `found`
// tells whether there was any.
std::string WithPassword(std::string_view text, const std::string& user, const std::string& hash,
                         bool& found) {
  std::string result;
  while (!text.empty()) {
    const std::string_view line = TakeLine(text);
    if (ParseLine(line).user == user) {
      found = true;
    } else {
      result.append(line).append("\n");
    }
  }
  if (!hash.empty()) {
    result.append(user).append(":").append(hash).append("\n");
  }
  return result;
}

}  // namespace

bool ReadStoredPassword(const std::string& user, StoredPassword& out) {
  const Descriptor directory(OpenDirectory());
  std::string text;
  struct stat status {};
  if (!directory.IsOpen() || !ReadPasswords(directory.get(), text, status)) {
    return false;
  }
  std::string_view rest = text;
  while (!rest.empty()) {
    const Line line = ParseLine(TakeLine(rest));
    if (line.user.empty()) {
      continue;
    }
    if (out.any_hash.empty()) {
      out.any_hash = line.hash;
    }
    if (line.user == user) {
      out.hash = line.hash;
    }
  }
  return true;
}

bool WriteStoredPassword(const std::string& user, const std::string& hash) {
  mkdir(RootedPath(kDirectory).c_str(), kPassable);
  const Descriptor directory(OpenDirectory());
  // A file of its own, since the other one is replaced; and not the directory, which
  // everybody may open and hold locked.
  const Descriptor lock(
      directory.IsOpen()
          ? openat(directory.get(), kLockName, O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, kPrivate)
          : -1);
  if (!lock.IsOpen() || flock(lock.get(), LOCK_EX) != 0) {
    return false;
  }
  std::string text;
  struct stat status {};
  if (!ReadPasswords(directory.get(), text, status)) {
    if (errno != ENOENT) {
      return false;
    }
    status = FirstStatus();
  }
  bool found = false;
  const std::string changed = WithPassword(text, user, hash, found);
  if (hash.empty() && !found) {
    errno = ENOENT;
    return false;
  }
  return Replace(directory.get(), changed, status);
}

}  // namespace ORBO
