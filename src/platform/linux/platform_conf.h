#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace ORBO {

// The value of `key` in /etc/orbo/platform.conf, below the root prefix; empty
// when the file or the key is missing.  Lines are "key=value" with blanks around
// either; "#" begins a comment line; the last line of a key wins.
//
// The file is read again when it has changed.  What changes within 100 ms of the
// last look is seen after that time, unless the file was new then.  Most requests
// ask for nothing.
std::string PlatformSetting(std::string_view key);

// The values of several keys, in their order, from one look at the file.
std::vector<std::string> PlatformSettings(std::initializer_list<std::string_view> keys);

// The setting as "yes" or "no"; `fallback` where it is neither, logged if it is
// not empty.
bool PlatformSwitch(std::string_view key, bool fallback);

// The setting as a number; `fallback` if it is none from `smallest` to `largest`, logged if
// it is not empty.
std::int64_t NumberSetting(std::string_view key, std::int64_t fallback, std::int64_t smallest,
                           std::int64_t largest);

// The words of `text` between blanks and commas.
std::vector<std::string> SplitSetting(std::string_view text);

}  // namespace ORBO
