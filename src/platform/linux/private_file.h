#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ORBO {

class PrivateDirectory;

// Files that are nobody's business but the platform's, mode 0600, in directories
// with mode 0700.  The user who owns the directory, that is the one whom the CGI
// programs run as, owns the files too; what root makes is given to that user.

enum class FileState {
  kRead,
  kMissing,
  kUnusable,  // no regular file, a link, of another user, writable by others, or too large
};

enum class Durability {
  kProcess,    // survives the end of this process
  kPowerLoss,  // survives a loss of power once the call has returned
};

// Makes the file `name` of `directory` with the content `text`: whole or not at
// all, for readers too.  Makes the directory where it is missing; root gives it to
// the `service_user` of platform.conf.  False with `errno` set: EEXIST if there is
// such a file, EPERM if the directory belongs to another user or is open to others.
bool CreatePrivateFile(const std::string& directory, const std::string& name,
                       const std::string& text, Durability durability);

// The same in a directory that is open already.
bool CreatePrivateFile(const PrivateDirectory& directory, const std::string& name,
                       const std::string& text, Durability durability);

// Makes `text` the content of the file `name` of `directory`, which others see as it
// was or as it is then, also when this process is killed meanwhile.  False with
// `errno` set, and the file is as it was.
bool ReplacePrivateFile(const PrivateDirectory& directory, const std::string& name,
                        const std::string& text);

// Reads a file of at most `limit` bytes into `text`, and the time of its last
// modification, in seconds since the epoch, into `modified`.  Both are unchanged
// unless the state is kRead.  Never waits, whatever lies there.
FileState ReadPrivateFile(const std::string& path, std::size_t limit, std::string& text,
                          std::int64_t& modified);

// Makes now the time of the last modification; never follows a link.  False with
// `errno` set.
bool TouchPrivateFile(const std::string& path);

// The names in the directory `path` without those that begin with a dot, of files
// that were not modified for more than `idle` seconds; all of them without `idle`.
// None if the directory cannot be read.
std::vector<std::string> PrivateFileNames(const std::string& path, std::int64_t idle = -1);

// Deletes what interrupted calls of the first three left in the directory more
// than an hour ago.
void SweepPrivateDirectory(const std::string& path);

}  // namespace ORBO
