#include "util/PriorityGuard.h"

#include <sys/resource.h>

#include <cerrno>
#include <cstring>

#include "util/log.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "PriorityGuard.cpp";

}  // namespace

PriorityGuard::PriorityGuard(int priority) {
  errno = 0;
  previous_ = getpriority(PRIO_PROCESS, 0);
  if (errno == 0 && previous_ != priority) {
    changed_ = setpriority(PRIO_PROCESS, 0, priority) == 0;
  }
}

PriorityGuard::~PriorityGuard() {
  // An ordinary user may lower the priority but not raise it again.
  if (changed_ && setpriority(PRIO_PROCESS, 0, previous_) != 0) {
    Log(LOG_ERR, "%s:%d cannot restore the priority %d: %s", kSource, __LINE__, previous_,
        std::strerror(errno));
  }
}

}  // namespace ORBO
