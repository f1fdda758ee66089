#pragma once

#include <string>
#include <string_view>

namespace ORBO {

// Writes all of `text`.  False with `errno` set.
bool WriteAll(int descriptor, std::string_view text);

// Makes `text` the content of the file `path`, mode 0600.  The file changes places
// with a draft, `path` with ".new" behind, which stays for the next time: whenever
// the process is killed, `path` is the old file or the new one, never a part.
// Writers take turns by a lock of their own, and readers by it too, since a file
// that is replaced twice while it is read is written to.  Links are replaced, not
// followed.  False with `errno` set, and the file is as it was.
bool ReplaceFile(const std::string& path, std::string_view text);

}  // namespace ORBO
