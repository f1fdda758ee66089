#include "util/StreamGuard.h"

namespace ORBO {
namespace {

const StreamGuard* innermost = nullptr;

}  // namespace

std::streamsize NullBuffer::xsputn(const char* /*text*/, std::streamsize size) { return size; }

NullBuffer::int_type NullBuffer::overflow(int_type character) {
  return traits_type::not_eof(character);
}

NullBuffer::pos_type NullBuffer::seekoff(off_type /*offset*/, std::ios::seekdir /*direction*/,
                                         std::ios::openmode /*mode*/) {
  return pos_type(0);
}

NullBuffer::pos_type NullBuffer::seekpos(pos_type /*position*/, std::ios::openmode /*mode*/) {
  return pos_type(0);
}

StreamGuard::StreamGuard(std::ios& stream)
    : outer_(innermost),
      stream_(stream),
      previous_state_(stream.rdstate()),
      previous_exceptions_(stream.exceptions()) {
  // The guard's own changes must not throw.
  stream_.exceptions(std::ios::goodbit);
  previous_buffer_ = stream_.rdbuf(&null_);
  innermost = this;
}

StreamGuard::~StreamGuard() {
  innermost = outer_;
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
