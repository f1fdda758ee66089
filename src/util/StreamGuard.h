#pragma once

#include <ios>
#include <streambuf>

namespace ORBO {

// What /dev/null is: nothing can be read, everything can be written and is gone, and
// every position is the start.  It needs no descriptor, so that it cannot fail and
// costs a request no system call.
class NullBuffer : public std::streambuf {
 protected:
  std::streamsize xsputn(const char* text, std::streamsize size) override;
  int_type overflow(int_type character) override;
  pos_type seekoff(off_type offset, std::ios::seekdir direction, std::ios::openmode mode) override;
  pos_type seekpos(pos_type position, std::ios::openmode mode) override;
};

// Lets a standard stream object read from or write to nothing while it lives.  Only
// the object is switched, by its buffer; descriptors stay as they are.  Restores the
// previous buffer, error state and exception mask.
class StreamGuard {
 public:
  explicit StreamGuard(std::ios& stream);
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
  NullBuffer null_;
  std::streambuf* previous_buffer_;
};

}  // namespace ORBO
