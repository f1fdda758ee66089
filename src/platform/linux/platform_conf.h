#pragma once

#include <string>
#include <string_view>

namespace ORBO {

// The value of `key` in /etc/orbo/platform.conf, below the root prefix; empty
// when the file or the key is missing.  Lines are "key=value" with blanks around
// either; "#" begins a comment line; the last line of a key wins.
//
// Reads the file at every call: most requests ask for nothing, and those that
// do ask once.
std::string PlatformSetting(std::string_view key);

}  // namespace ORBO
