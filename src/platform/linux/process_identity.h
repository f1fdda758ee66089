#pragma once

#include <cstdint>

namespace ORBO {

// A process, told from all later ones of the same id by the time of its start.
struct ProcessIdentity {
  std::int64_t pid = 0;    // 0: no process
  std::int64_t start = 0;  // clock ticks since the system's start; 0: could not be told
};

// The process whose id is `pid`.  False, and `out` unchanged, if there is none, it has
// ended, or the start of it cannot be told.
bool IdentifyProcess(std::int64_t pid, ProcessIdentity& out);

enum class ProcessState {
  kRunning,
  kGone,     // ended, also if its parent has not asked for its exit status yet
  kUnknown,  // there is a process of that id, and /proc does not show which
};

ProcessState StateOf(const ProcessIdentity& process);

}  // namespace ORBO
