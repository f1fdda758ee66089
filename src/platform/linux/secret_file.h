#pragma once

#include <sys/stat.h>

#include <string>

#include "platform/linux/name_service.h"

namespace ORBO {

// Files with secrets that an administrator gives the CGI programs to read.

// The account of the user whom the CGI programs run as: named in the configuration,
// else the owner of the session directory.  False where neither tells.
bool FindServiceAccount(Account& account);

// Reads the file `name` of the open directory `directory`.  It is used only if it is a
// regular file of root or of this process's user, to root also one of the CGI
// programs' user, of at most `limit` bytes, which others can neither write nor read
// but for its group.  Its owner and rights are in `status`.  False with `errno` set;
// EPERM for wrong rights, EFBIG for a file that is too large.
bool ReadSecretFile(int directory, const char* name, unsigned long long limit, std::string& text,
                    struct stat& status);

}  // namespace ORBO
