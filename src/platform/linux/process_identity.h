#pragma once

#include <sys/types.h>

#include <cstdint>

namespace ORBO {

// A process, told from all later ones of the same id by the time of its start.
struct ProcessIdentity {
  std::int64_t pid = 0;    // 0: no process
  std::int64_t start = 0;  // clock ticks since the system's start; 0: could not be told
  std::int64_t boot = 0;   // tells the system's starts apart; 0: could not be told
};

// The process whose id is `pid`.  False, and `out` unchanged, if there is none or it
// has ended.
bool IdentifyProcess(std::int64_t pid, ProcessIdentity& out);

enum class ProcessState {
  kRunning,
  kGone,     // ended, also if its parent has not asked for its exit status yet
  kUnknown,  // there is a process of that id, and /proc does not show which
};

ProcessState StateOf(const ProcessIdentity& process);

// Whether `user` has started the process and so may signal it.
bool IsProcessOf(std::int64_t pid, uid_t user);

// Sends `signal` to a process that is running, and never to another one that gets its
// id.  0, or an error number of errno.h; ESRCH if it is not certain that it runs.
int SignalProcess(const ProcessIdentity& process, int signal);

}  // namespace ORBO
