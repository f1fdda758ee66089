#pragma once

#include <sys/types.h>

#include <string>

#include "util/Descriptor.h"

namespace ORBO {

// Makes the directory `path` with the mode `mode`, and with mode 0755 those above
// it, where they are missing.
void MakeDirectories(const std::string& path, mode_t mode);

// A directory of private files, open while this object lives.  See private_file.h.
class PrivateDirectory {
 public:
  // Opens `path`, and makes it where it is missing.  On failure `errno` says why.
  explicit PrivateDirectory(const std::string& path);

  bool IsOpen() const { return directory_.IsOpen(); }
  int get() const { return directory_.get(); }

  // Gives the open file `file`, which this process made, to the directory's owner.
  bool GiveToOwner(int file) const;

 private:
  bool Adopt();

  Descriptor directory_;
  uid_t user_ = 0;
  gid_t group_ = 0;
};

}  // namespace ORBO
