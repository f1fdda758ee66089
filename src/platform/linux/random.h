#pragma once

#include <cstddef>
#include <string>

namespace ORBO {

// `count` unpredictable bytes from getrandom(2).  Ends the process if the kernel
// has none: a guessable secret must never be given out.
std::string RandomBytes(std::size_t count);

// Compares secrets in a time that does not tell where they differ.
bool SecretsEqual(const std::string& a, const std::string& b);

}  // namespace ORBO
