#pragma once

#include <sys/types.h>

#include <string>

#include "testing/guard_process.h"
#include "util/Descriptor.h"

namespace ORBO {

// A test's hold on its guard, the process that starts the processes of calls.  All of
// them end with this object, or with the test's process, however that ends.
class CallGuard {
 public:
  explicit CallGuard(const GuardDuties& duties);
  ~CallGuard();

  CallGuard(const CallGuard&) = delete;
  CallGuard& operator=(const CallGuard&) = delete;

  // Runs a call in a process of its own and waits for its end.  What was wrong, or "".
  // After `seconds` it is ended, with all that was left running before.
  std::string Run(int value, int seconds);

  // Waits until nothing runs any more; false after `seconds`.
  bool WaitForEnd(int seconds);

 private:
  // Waits for a message of that kind and tells its value; other messages are noted in
  // `is_served`, or lost.
  bool Await(GuardMessage::Kind kind, int seconds, int& value, bool& is_served);

  Descriptor socket_;
  pid_t guard_ = -1;
  pid_t owner_;  // no process that is forked from the test's ends the guard
};

}  // namespace ORBO
