#pragma once

#include <chrono>
#include <string>

#include "platform/linux/process_identity.h"
#include "util/Descriptor.h"

namespace ORBO {

// Waits for changes of one task's record.  From its making on no change is missed:
// make it, read the record, wait, read again.
class TaskWatch {
 public:
  using Clock = std::chrono::steady_clock;

  enum class Event {
    kChange,  // there may be something new
    kEnd,     // the process has ended: what it has written is all
    kTimeOver,
  };

  // Watches the file `file` of `directory`.  Where the system refuses that the waiting
  // ends every 50 ms.
  TaskWatch(const std::string& directory, const std::string& file);
  ~TaskWatch();
  // Not copyable: each has its notices to itself.
  TaskWatch(const TaskWatch&) = delete;
  TaskWatch& operator=(const TaskWatch&) = delete;

  // Waits for the end of `process` too; for one that is not known, or where the system
  // refuses that, the waiting ends every 500 ms.
  Event Wait(const ProcessIdentity& process, Clock::time_point deadline);

 private:
  bool Follow(const ProcessIdentity& process);
  bool TakeNotices();

  std::string file_;
  Descriptor notices_;
  int watch_ = -1;
  Descriptor process_;
  ProcessIdentity followed_;
};

}  // namespace ORBO
