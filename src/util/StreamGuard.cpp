#include "util/StreamGuard.h"

namespace ORBO {
namespace {

const StreamGuard* innermost = nullptr;

}  // namespace

StreamGuard::StreamGuard(std::ios& stream, std::ios::openmode mode)
    : outer_(innermost),
      stream_(stream),
      previous_state_(stream.rdstate()),
      previous_exceptions_(stream.exceptions()) {
  // The guard's own changes must not throw.
  stream_.exceptions(std::ios::goodbit);
  null_.open("/dev/null", (mode & std::ios::out) != 0 ? mode | std::ios::trunc : mode);
  previous_buffer_ = stream_.rdbuf(&null_);
  innermost = this;
}

StreamGuard::~StreamGuard() {
  innermost = outer_;
  null_.close();
  // Nor may a stream that a handler made throw on errors do so here.
  stream_.exceptions(std::ios::goodbit);
  stream_.rdbuf(previous_buffer_);
  stream_.setstate(previous_state_);
  if ((previous_state_ & previous_exceptions_) == 0) {
    stream_.exceptions(previous_exceptions_);
  }
}

bool StreamGuard::IsSwitched(const std::ios& stream) {
  const StreamGuard* guard = innermost;
  while (guard != nullptr && &guard->stream_ != &stream) {
    guard = guard->outer_;
  }
  return guard != nullptr;
}

}  // namespace ORBO
