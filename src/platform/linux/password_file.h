#pragma once

#include <string>

namespace ORBO {

// The password file of the system, /etc/orbo/passwords: lines "user:hash", hashes
// as of crypt(5); "#" begins a comment line.  It is used only if it is a regular
// file of root or of this process's user, which others can neither write nor read
// but for its group.

struct StoredPassword {
  // The hash of the user; "" for one who stands not in the file.
  std::string hash;
  // The first hash of the file: work on it takes as long as on the user's.
  std::string any_hash;
};

// False, with `errno` set, if the file cannot be used; EPERM for wrong rights.
bool ReadStoredPassword(const std::string& user, StoredPassword& out);

// Gives the user's line, new or old, the hash `hash`; an empty one removes it.  The
// file is replaced as a whole, keeps its owner and rights, and is made if it is
// missing: readable for the group of the CGI programs' user, where root makes it.
// False, with `errno` set, on failure; ENOENT if there was nobody to remove.
bool WriteStoredPassword(const std::string& user, const std::string& hash);

}  // namespace ORBO
