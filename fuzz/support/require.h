#pragma once

#include <cstdlib>

namespace ORBO {

// What must hold whatever the input is.  A fuzzer and a replay stop where it does not.
inline void Require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

}  // namespace ORBO
