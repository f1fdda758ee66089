#pragma once

#include <string>
#include <string_view>

namespace ORBO {

// Writes all of `text`.  False with `errno` set.
bool WriteAll(int descriptor, std::string_view text);

// Makes `text` the content of the file `path`, mode 0600: for readers, and when
// the process is killed, it is the old file or the new one, never a part; a loss of
// power may leave it empty.  Links are replaced, not followed.  Writers take turns
// by a lock of their own, since the draft, `path` with ".new" behind, has the same
// name for all; what a killed one left there is replaced.  False with `errno` set,
// and the file is as it was.
bool ReplaceFile(const std::string& path, std::string_view text);

}  // namespace ORBO
