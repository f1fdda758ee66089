#pragma once

#include <cstdint>
#include <string_view>

namespace ORBO {

// Bytes of a content.
struct ByteRange {
  std::uint64_t first = 0;
  std::uint64_t length = 0;
};

enum class RangeKind { kWhole, kPart, kUnsatisfiable };

// Reads the value of the header Range (RFC 9110, section 14.2) for a content of `size`
// bytes.  kPart with the part in `range` for one range of bytes that lies in the
// content at least in part; kUnsatisfiable for one that does not.  kWhole, and `range`
// unchanged, for everything else: several ranges, another unit, a malformed value.
RangeKind ReadByteRange(std::string_view value, std::uint64_t size, ByteRange& range);

}  // namespace ORBO
