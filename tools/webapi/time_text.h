#pragma once

#include <cstdint>
#include <string>

// Times for people.  Times are seconds since the epoch.
namespace ORBO::tool {

// How long ago `time` was, in its largest unit: "5s", "12m", "3h", "40d".
std::string AgeText(std::int64_t time, std::int64_t now);

// "2026-01-31 18:05:00" in local time.
std::string TimeText(std::int64_t time);

// Reads an end of validity: "never" (0), an amount and a unit from `now` on ("90m",
// "12h", "30d", "8w"), a day ("2026-01-31", from its first moment) or a moment
// ("2026-01-31 18:05") in local time.  False, and `out` unchanged, if it is none of
// these or not after `now`.
bool ReadExpiry(const std::string& text, std::int64_t now, std::int64_t& out);

}  // namespace ORBO::tool
