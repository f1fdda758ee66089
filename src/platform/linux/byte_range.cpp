#include "platform/linux/byte_range.h"

#include <algorithm>
#include <limits>

#include "util/header_line.h"
#include "util/trim.h"

namespace ORBO {
namespace {

constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();

// A position of any number of digits; one that does not fit is beyond every content.
bool ReadPosition(std::string_view text, std::uint64_t& position) {
  if (text.empty() || text.find_first_not_of("0123456789") != std::string_view::npos) {
    return false;
  }
  position = 0;
  for (const char digit : text) {
    if (__builtin_mul_overflow(position, 10U, &position) ||
        __builtin_add_overflow(position, static_cast<unsigned>(digit - '0'), &position)) {
      position = kMost;
      return true;
    }
  }
  return true;
}

RangeKind ReadSuffix(std::string_view text, std::uint64_t size, ByteRange& range) {
  std::uint64_t length = 0;
  if (!ReadPosition(text, length)) {
    return RangeKind::kWhole;
  }
  if (length == 0) {
    return RangeKind::kUnsatisfiable;
  }
  if (size == 0) {
    return RangeKind::kWhole;  // satisfiable, yet no part can be named
  }
  length = std::min(length, size);
  range = {size - length, length};
  return RangeKind::kPart;
}

}  // namespace

RangeKind ReadByteRange(std::string_view value, std::uint64_t size, ByteRange& range) {
  const std::size_t equals = value.find('=');
  if (equals == std::string_view::npos || !IsSameHeader(Trim(value.substr(0, equals)), "bytes")) {
    return RangeKind::kWhole;
  }
  const std::string_view positions = Trim(value.substr(equals + 1));
  const std::size_t hyphen = positions.find('-');
  if (hyphen == std::string_view::npos) {
    return RangeKind::kWhole;
  }
  if (hyphen == 0) {
    return ReadSuffix(positions.substr(1), size, range);
  }
  std::uint64_t first = 0;
  std::uint64_t last = kMost;
  const std::string_view end = positions.substr(hyphen + 1);
  if (!ReadPosition(positions.substr(0, hyphen), first) ||
      (!end.empty() && !ReadPosition(end, last)) || first > last) {
    return RangeKind::kWhole;
  }
  if (first >= size) {
    return RangeKind::kUnsatisfiable;
  }
  range = {first, std::min(last, size - 1) - first + 1};
  return RangeKind::kPart;
}

}  // namespace ORBO
