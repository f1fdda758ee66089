#pragma once

#include <fstream>
#include <ios>

namespace ORBO {

// Lets a standard stream object read from or write to /dev/null while it lives.
// Only the object is switched, by its buffer; descriptors stay as they are.
// Restores the previous buffer, error state and exception mask.
class StreamGuard {
 public:
  // `mode` is std::ios::in or std::ios::out.
  StreamGuard(std::ios& stream, std::ios::openmode mode);
  ~StreamGuard();

  StreamGuard(const StreamGuard&) = delete;
  StreamGuard& operator=(const StreamGuard&) = delete;

  // Whether a guard lives that has switched `stream`.  What writes past the object, to
  // the descriptor, must ask.
  static bool IsSwitched(const std::ios& stream);

 private:
  const StreamGuard* const outer_;  // guards nest; not owned
  std::ios& stream_;
  std::ios::iostate previous_state_;
  std::ios::iostate previous_exceptions_;
  std::filebuf null_;
  std::streambuf* previous_buffer_;
};

}  // namespace ORBO
