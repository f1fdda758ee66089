#pragma once

#include <string>
#include <string_view>

#include "util/Descriptor.h"

namespace ORBO {

// A file of an upload on its way to the disk, removed unless it is kept.  Operations
// that fail leave the reason in `errno`.
class StoredFile {
 public:
  StoredFile() = default;
  ~StoredFile();

  StoredFile(const StoredFile&) = delete;
  StoredFile& operator=(const StoredFile&) = delete;

  // Makes the file in `directory`, mode 0600, under a name that nobody can guess.
  bool Create(const std::string& directory);
  bool Write(std::string_view text);
  // Closes the file; it stays as long as the list of stored files has it.
  bool Keep();

  const std::string& path() const { return path_; }

 private:
  std::string path_;
  Descriptor file_{-1};
  bool is_kept_ = false;
};

}  // namespace ORBO
