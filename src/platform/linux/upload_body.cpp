#include "platform/linux/upload_body.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace ORBO {

void UploadBody::Fill() {
  Reserve(2 * kEnough);
  while (end_ - begin_ < kEnough && ReadMore()) {
  }
}

void UploadBody::Reserve(std::size_t size) {
  if (buffer_.size() < size) {
    buffer_.resize(size);
  }
}

bool UploadBody::ReadMore() {
  if (begin_ > 0) {
    std::memmove(buffer_.data(), &buffer_[begin_], end_ - begin_);
    end_ -= begin_;
    begin_ = 0;
  }
  const auto wanted =
      static_cast<std::size_t>(std::min<std::uint64_t>(buffer_.size() - end_, length_ - read_));
  ssize_t count;
  do {
    count = wanted == 0 ? 0 : read(descriptor_, &buffer_[end_], wanted);
  } while (count < 0 && errno == EINTR);
  has_failed_ = count < 0;
  if (count <= 0) {
    return false;
  }
  end_ += static_cast<std::size_t>(count);
  read_ += static_cast<std::uint64_t>(count);
  return true;
}

}  // namespace ORBO
