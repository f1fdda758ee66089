#pragma once

#include <cstring>
#include <string>

namespace ORBO {

// Overwrites a secret, with what a longer text has left behind it, and empties the
// string.  The compiler may not leave this out, though the memory is not read any more.
inline void Cleanse(std::string& secret) {
  secret.resize(secret.capacity());
  explicit_bzero(secret.data(), secret.size());
  secret.clear();
}

// A secret that is overwritten at the end, whichever way that comes.
struct SecretText {
  SecretText() = default;
  ~SecretText() { Cleanse(text); }
  // Not copyable: each copy would have to be overwritten too.
  SecretText(const SecretText&) = delete;
  SecretText& operator=(const SecretText&) = delete;

  std::string text;
};

}  // namespace ORBO
