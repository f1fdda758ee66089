#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ORBO {

// The value of `key` in /etc/orbo/platform.conf, below the root prefix; empty
// when the file or the key is missing.  Lines are "key=value" with blanks around
// either; "#" begins a comment line; the last line of a key wins.
//
// The file is looked at in every call, and read again when it has changed.  Most
// requests ask for nothing.
std::string PlatformSetting(std::string_view key);

// The setting as "yes" or "no"; `fallback` where it is neither, logged if it is
// not empty.
bool PlatformSwitch(std::string_view key, bool fallback);

// The words of `text` between blanks and commas.
std::vector<std::string> SplitSetting(std::string_view text);

}  // namespace ORBO
