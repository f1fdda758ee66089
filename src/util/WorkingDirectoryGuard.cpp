#include "util/WorkingDirectoryGuard.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "util/log.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "WorkingDirectoryGuard.cpp";

}  // namespace

WorkingDirectoryGuard::WorkingDirectoryGuard(const std::string& directory)
    : previous_(open(".", O_PATH | O_DIRECTORY | O_CLOEXEC)),
      entered_(previous_.IsOpen() && chdir(directory.c_str()) == 0) {}

WorkingDirectoryGuard::~WorkingDirectoryGuard() {
  if (entered_ && fchdir(previous_.get()) != 0) {
    Log(LOG_ERR, "%s:%d cannot go back to the working directory: %s", kSource, __LINE__,
        std::strerror(errno));
  }
}

}  // namespace ORBO
