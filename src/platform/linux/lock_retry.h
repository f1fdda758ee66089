#pragma once

#include <time.h>

#include <algorithm>
#include <cerrno>
#include <chrono>

namespace ORBO {

// Calls `attempt` until it returns true, for `seconds` at most and once at least.
// False, with the `errno` of the last attempt, when the time is over or that was
// another than EWOULDBLOCK.  The pauses grow from 0.1 to 10 ms.
template <typename Attempt>
bool RetryLock(int seconds, Attempt attempt) {
  using std::chrono::nanoseconds;
  using Clock = std::chrono::steady_clock;
  const Clock::time_point deadline = Clock::now() + std::chrono::seconds(std::max(seconds, 0));
  nanoseconds pause = std::chrono::microseconds(100);
  while (!attempt()) {
    const nanoseconds left = deadline - Clock::now();
    if (errno != EWOULDBLOCK || left.count() <= 0) {
      return false;
    }
    const timespec length{0, static_cast<long>(std::min(pause, left).count())};
    nanosleep(&length, nullptr);
    pause = std::min<nanoseconds>(2 * pause, std::chrono::milliseconds(10));
  }
  return true;
}

}  // namespace ORBO
