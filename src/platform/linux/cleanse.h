#pragma once

#include <cstring>
#include <string>

namespace ORBO {

// Overwrites a secret and empties the string.  The compiler may not leave this
// out, though the memory is not read any more.
inline void Cleanse(std::string& secret) {
  explicit_bzero(secret.data(), secret.size());
  secret.clear();
}

}  // namespace ORBO
