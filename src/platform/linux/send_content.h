#pragma once

#include <signal.h>

#include <cstdint>
#include <cstdio>

namespace ORBO {

// Lets a write to a reader that is gone fail with EPIPE instead of ending the process,
// while it lives.
class BrokenPipeGuard {
 public:
  BrokenPipeGuard();
  ~BrokenPipeGuard();
  BrokenPipeGuard(const BrokenPipeGuard&) = delete;
  BrokenPipeGuard& operator=(const BrokenPipeGuard&) = delete;

 private:
  struct sigaction previous_ {};
  bool is_set_;
};

// Writes `length` bytes of the regular file `file` from `offset` on to `output`, in
// constant memory.  False if not all could be read or written: the file has become
// shorter, the reader is gone.
bool SendContent(int output, int file, std::uint64_t offset, std::uint64_t length);

// Writes `size` bytes; false if not all could be written.
bool SendBytes(int output, const char* bytes, std::size_t size);

}  // namespace ORBO
