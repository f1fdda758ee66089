#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace ORBO {

// The body of a request on its way in: what was read ahead of its user, and where
// in the body that is.
class UploadBody {
 public:
  // The next `length` bytes of `descriptor`, which is not owned.
  UploadBody(int descriptor, std::uint64_t length) : descriptor_(descriptor), length_(length) {}

  // What has been read and not skipped.  Valid until more is read.
  std::string_view ahead() const { return std::string_view(buffer_).substr(begin_, end_ - begin_); }
  // Passes the first `count` bytes of what is ahead.
  void Skip(std::size_t count) { begin_ += count; }

  // Reads on until kEnough bytes are ahead, or the body ends.
  void Fill();
  // Reads what has come, and waits for the first of it.  False at the end of the body
  // and on failure.
  bool ReadMore();
  // Makes room for `size` bytes ahead.
  void Reserve(std::size_t size);

  // Of the first byte ahead.
  std::uint64_t position() const { return read_ - (end_ - begin_); }
  std::uint64_t length() const { return length_; }
  // Whether all of the body has been read.
  bool IsWhole() const { return read_ == length_; }
  // Whether reading failed, rather than that the input ended.
  bool HasFailed() const { return has_failed_; }

  // For every header and boundary.  Half of what is read at a time, so that little of
  // it is moved.
  static constexpr std::size_t kEnough = 32768;

  int descriptor() const { return descriptor_; }

 private:
  int descriptor_;
  std::uint64_t length_;
  std::uint64_t read_ = 0;
  std::string buffer_;  // of which [begin_, end_) is ahead
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  bool has_failed_ = false;
};

}  // namespace ORBO
