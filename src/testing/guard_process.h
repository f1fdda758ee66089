#pragma once

#include <functional>

namespace ORBO {

// What goes through the socket between a test, its guard and the process of a call.
struct GuardMessage {
  enum Kind : int {
    kRun,      // to the guard: start a call with this value
    kKill,     // to the guard: end all processes
    kCount,    // to the guard: does anything run?
    kServed,   // from the process of a call: its work is done
    kEnded,    // from the guard: that process has ended, value as of wait(2)
    kRunning,  // from the guard: value 1 or 0
  };
  Kind kind;
  int value;
};

struct GuardDuties {
  // What the process of a call does; gets the value of kRun.
  std::function<void(int)> serve;
  // What is left to do when all processes have ended.
  std::function<void()> clean_up;
};

bool SendMessage(int socket, const GuardMessage& message);
// Waits for a message; false when there will be none.
bool ReceiveMessage(int socket, GuardMessage& message);

// The life of the guard: starts a process for each call, keeps what those leave running,
// and ends all of it when nobody holds the other end of the socket any more.
[[noreturn]] void RunGuard(int socket, const GuardDuties& duties) noexcept;

}  // namespace ORBO
