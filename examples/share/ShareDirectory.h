#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace example {

struct SharedFile {
  std::string name;
  std::uint64_t size = 0;     // bytes
  std::int64_t modified = 0;  // seconds since the epoch
};

// The directory of the shared files, /var/lib/orbo/share below the root prefix.  It
// holds regular files with names that IsFileName accepts; anything else in it is as
// good as not there, and no symbolic link is followed.  Operations that fail leave the
// reason in `errno`.
class ShareDirectory {
 public:
  // Opens the directory, and makes it (0700) where it is missing.
  ShareDirectory();
  ~ShareDirectory();

  // Not copyable: it closes its descriptor.
  ShareDirectory(const ShareDirectory&) = delete;
  ShareDirectory& operator=(const ShareDirectory&) = delete;

  bool IsOpen() const { return directory_ >= 0; }

  // Replaces `files` with all files, in the order of their names.
  bool List(std::vector<SharedFile>& files) const;
  // A descriptor for reading, which the caller closes; -1 on failure, with ENOENT for
  // what is no shared file.
  int OpenFile(const std::string& name) const;
  bool Remove(const std::string& name) const;
  // Moves the file `path` here, across file systems too, under the name for
  // `client_name` with the first number that is free.  `taken` tells what became of it.
  bool Take(const std::string& path, const std::string& client_name, SharedFile& taken) const;

  std::string PathOf(const std::string& name) const { return path_ + "/" + name; }

 private:
  // A copy of the file `path` in this directory, yet without a name, so that a process
  // that is killed leaves nothing; -1 on failure.
  int Copy(const std::string& path) const;

  std::string path_;
  int directory_ = -1;
};

}  // namespace example
