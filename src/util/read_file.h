#pragma once

#include <string>

namespace ORBO {

// Reads the whole regular file `path` into `out`.  False, with `errno` set, if
// it cannot be opened or read or is no regular file; `out` is unchanged then.
bool ReadWholeFile(const std::string& path, std::string& out);

// The same for a file that the system itself writes: no link is followed (ELOOP),
// and one of more than `limit` bytes is refused (EFBIG).
bool ReadOwnFile(const std::string& path, unsigned long long limit, std::string& out);

// Reads at most `limit` bytes from `descriptor` up to its end into `out`, in
// pieces, so that memory follows what really arrives.  False, with `errno` set,
// on an error.
bool ReadUpTo(int descriptor, unsigned long long limit, std::string& out);

}  // namespace ORBO
