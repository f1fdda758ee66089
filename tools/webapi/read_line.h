#pragma once

#include <cstddef>
#include <string>

namespace ORBO::tool {

// Reads a line of `descriptor` without its end, byte by byte, so that nothing
// behind it is taken.  The last line needs no end.  False, and `line` empty, at the
// end of the input, for a line of more than `limit` bytes, and on an error or a
// signal.
bool ReadLine(int descriptor, std::size_t limit, std::string& line);

}  // namespace ORBO::tool
