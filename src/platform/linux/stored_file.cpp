#include "platform/linux/stored_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/abandoned_files.h"
#include "platform/linux/stored_files.h"
#include "util/write_file.h"

namespace ORBO {

StoredFile::~StoredFile() {
  if (!is_kept_ && !path_.empty()) {
    StoredFiles::Remove(path_);
  }
}

bool StoredFile::Create(const std::string& directory) {
  path_ = directory + "/" + TemporaryFileName();
  if (!StoredFiles::Add(path_)) {
    errno = ENOMEM;
    return false;
  }
  file_.Reset(open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
  return file_.IsOpen();
}

bool StoredFile::Write(std::string_view text) { return WriteAll(file_.get(), text); }

bool StoredFile::Keep() {
  // Some file systems tell only now that there was no room.
  is_kept_ = close(file_.Release()) == 0;
  return is_kept_;
}

}  // namespace ORBO
