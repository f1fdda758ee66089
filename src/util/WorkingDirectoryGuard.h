#pragma once

#include <string>

#include "util/Descriptor.h"

namespace ORBO {

// Works in another directory while it lives.  The previous one is kept open, so
// that the way back does not depend on its name.
class WorkingDirectoryGuard {
 public:
  // Enters `directory`, unless there would be no way back.
  explicit WorkingDirectoryGuard(const std::string& directory);
  // Goes back; a failure is logged.
  ~WorkingDirectoryGuard();

  WorkingDirectoryGuard(const WorkingDirectoryGuard&) = delete;
  WorkingDirectoryGuard& operator=(const WorkingDirectoryGuard&) = delete;

  // Whether the directory was entered; `errno` tells why not right after
  // construction.
  bool IsEntered() const { return entered_; }

 private:
  Descriptor previous_;
  bool entered_;
};

}  // namespace ORBO
