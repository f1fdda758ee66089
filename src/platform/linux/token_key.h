#pragma once

#include <string>

namespace ORBO {

// The directory of the token files and of the key that their hashes are made with,
// without a trailing "/".
std::string TokenDirectory();

// Whether the key may be made where there is none yet.
enum class MissingKey { kMake, kFail };

// Reads the key of the token hashes.  It is made once, by whoever comes first, and
// never replaced: every token would be void.  False, with `errno` set, if it cannot
// be used.
bool ReadTokenKey(MissingKey missing, std::string& key);

}  // namespace ORBO
