#pragma once

#include <cstdint>
#include <string>

// The logs of background tasks: text of a bounded size beside the record, which goes
// with the record.  A place in it is named by its offset, the number of bytes written
// before it since the beginning; offsets stay when the oldest text is dropped.
// NOLINTBEGIN(readability-identifier-naming)
namespace KEP::TaskUtil {

// Bytes; beyond that the older half is dropped, at the end of a line.
inline constexpr std::size_t kLargestTaskLog = std::size_t{256} << 10;

// Adds `text` to the log of a task that has a record; of a text larger than half the
// bound only the end.  False, and the log as it was, if it cannot be stored.  A writer
// that is killed meanwhile may leave a part of the text, and readers may see that.
bool appendTaskLog(const char* owner, const char* task_id, const std::string& text);

// Reads the text from `offset` on, or from the oldest that is kept where that is
// later.  `begin` is where it begins and `end` where it ends: from there the next
// reading goes on.  A task without a log has an empty one; false if there is no record.
bool readTaskLog(const char* owner, const char* task_id, std::uint64_t offset, std::string& text,
                 std::uint64_t& begin, std::uint64_t& end);

}  // namespace KEP::TaskUtil
// NOLINTEND(readability-identifier-naming)
