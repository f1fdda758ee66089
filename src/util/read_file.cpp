#include "util/read_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "util/Descriptor.h"

namespace ORBO {
namespace {

constexpr std::size_t kFirstPiece = 4096;
constexpr std::size_t kLargestPiece = 65536;

// Appends up to `size` bytes, fewer only at the end of the input.
bool AppendFrom(int descriptor, std::size_t size, std::string& text) {
  std::size_t end = text.size();
  text.resize(end + size);
  while (end < text.size()) {
    const ssize_t count = read(descriptor, &text[end], text.size() - end);
    if (count == 0) {
      break;
    }
    if (count > 0) {
      end += static_cast<std::size_t>(count);
    } else if (errno != EINTR) {
      return false;
    }
  }
  text.resize(end);
  return true;
}

// Whether the open file is a regular one; its size, which is 0 for files of the
// kernel whatever they hold.
bool IsRegularFile(int descriptor, off_t& size) {
  struct stat status;
  if (fstat(descriptor, &status) != 0) {
    return false;
  }
  if (!S_ISREG(status.st_mode)) {
    errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    return false;
  }
  size = status.st_size;
  return true;
}

// Reads the file, opened with `flags` besides.
bool ReadFile(const std::string& path, int flags, unsigned long long limit, std::string& out) {
  // Opening never waits: a pipe in the place of the file must not stop the process.
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | flags));
  off_t size = 0;
  if (!file.IsOpen() || !IsRegularFile(file.get(), size)) {
    return false;
  }
  if (size == 0) {
    return ReadUpTo(file.get(), limit, out);
  }
  if (static_cast<unsigned long long>(size) > limit) {
    errno = EFBIG;
    return false;
  }
  std::string text;
  if (!AppendFrom(file.get(), static_cast<std::size_t>(size), text)) {
    return false;
  }
  out = std::move(text);
  return true;
}

}  // namespace

bool ReadWholeFile(const std::string& path, std::string& out) {
  return ReadFile(path, 0, out.max_size(), out);
}

bool ReadOwnFile(const std::string& path, unsigned long long limit, std::string& out) {
  return ReadFile(path, O_NOFOLLOW, std::min<unsigned long long>(limit, out.max_size()), out);
}

bool ReadUpTo(int descriptor, unsigned long long limit, std::string& out) {
  std::string text;
  std::size_t piece = kFirstPiece;
  while (text.size() < limit) {
    const std::size_t wanted = text.size() + static_cast<std::size_t>(std::min<unsigned long long>(
                                                 piece, limit - text.size()));
    if (!AppendFrom(descriptor, wanted - text.size(), text)) {
      return false;
    }
    if (text.size() < wanted) {
      break;
    }
    piece = std::min(2 * piece, kLargestPiece);
  }
  out = std::move(text);
  return true;
}

}  // namespace ORBO
