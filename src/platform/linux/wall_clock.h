#pragma once

#include <chrono>
#include <cstdint>

namespace ORBO {

// Milliseconds since the epoch.
inline std::int64_t WallClock() {
  using std::chrono::system_clock;
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             system_clock::now().time_since_epoch())
      .count();
}

}  // namespace ORBO
