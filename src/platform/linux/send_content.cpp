#include "platform/linux/send_content.h"

#include <poll.h>
#include <sys/sendfile.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace ORBO {
namespace {

constexpr std::uint64_t kLargestPiece = std::uint64_t{1} << 30;  // fits every ssize_t
constexpr std::size_t kBufferSize = std::size_t{64} << 10;

// After a failed write: whether it is to be tried again.  A server may hand out a
// descriptor that does not block.
bool MayTryAgain(int output) {
  if (errno == EINTR) {
    return true;
  }
  pollfd waiting = {output, POLLOUT, 0};
  return errno == EAGAIN && (poll(&waiting, 1, -1) > 0 || errno == EINTR);
}

// For files and outputs that the kernel cannot join.
bool CopyContent(int output, int file, off_t position, std::uint64_t length) {
  char buffer[kBufferSize];
  while (length > 0) {
    const ssize_t count =
        pread(file, buffer,
              static_cast<std::size_t>(std::min<std::uint64_t>(length, sizeof buffer)), position);
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count <= 0 || !SendBytes(output, buffer, static_cast<std::size_t>(count))) {
      return false;
    }
    position += count;
    length -= static_cast<std::uint64_t>(count);
  }
  return true;
}

}  // namespace

BrokenPipeGuard::BrokenPipeGuard() {
  struct sigaction ignored {};
  ignored.sa_handler = SIG_IGN;
  is_set_ = sigaction(SIGPIPE, &ignored, &previous_) == 0;
}

BrokenPipeGuard::~BrokenPipeGuard() {
  if (is_set_) {
    sigaction(SIGPIPE, &previous_, nullptr);
  }
}

bool SendContent(int output, int file, std::uint64_t offset, std::uint64_t length) {
  auto position = static_cast<off_t>(offset);
  while (length > 0) {
    const ssize_t sent = sendfile(output, file, &position,
                                  static_cast<std::size_t>(std::min(length, kLargestPiece)));
    if (sent == 0) {
      return false;
    }
    if (sent > 0) {
      length -= static_cast<std::uint64_t>(sent);
    } else if (errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP) {
      return CopyContent(output, file, position, length);
    } else if (!MayTryAgain(output)) {
      return false;
    }
  }
  return true;
}

bool SendBytes(int output, const char* bytes, std::size_t size) {
  while (size > 0) {
    const ssize_t count = write(output, bytes, size);
    if (count >= 0) {
      bytes += count;
      size -= static_cast<std::size_t>(count);
    } else if (!MayTryAgain(output)) {
      return false;
    }
  }
  return true;
}

}  // namespace ORBO
