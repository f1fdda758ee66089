#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace e2e {

// Waits until `done` holds, asking anew whenever something changes in
// `directory`, or until the process behind `process_descriptor` (as of
// pidfd_open(2); -1 for none) has ended, or until the time is over.  Returns
// what `done` says last.
bool WaitForChange(const std::string& directory, const std::function<bool()>& done,
                   std::chrono::milliseconds limit, int process_descriptor = -1);

// The content of a file; "" if it cannot be read.
std::string ReadFile(const std::string& path);

}  // namespace e2e
