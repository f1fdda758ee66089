#include "util/StreamGuard.h"

namespace ORBO {

StreamGuard::StreamGuard(std::ios& stream, std::ios::openmode mode)
    : stream_(stream), previous_state_(stream.rdstate()) {
  null_.open("/dev/null", (mode & std::ios::out) != 0 ? mode | std::ios::trunc : mode);
  previous_buffer_ = stream_.rdbuf(&null_);
}

StreamGuard::~StreamGuard() {
  null_.close();
  // A stream that a handler made throw on errors must not do so here.
  stream_.exceptions(std::ios::goodbit);
  stream_.rdbuf(previous_buffer_);
  stream_.setstate(previous_state_);
}

}  // namespace ORBO
