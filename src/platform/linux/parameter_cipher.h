#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ORBO {

// Opens enciphered parameters; docs/encrypted-parameters.md has their format.  A
// message is what a client has enciphered: a parameter line, or the key text that
// such a line is enciphered by.  Times are milliseconds since the epoch.
//
// Every operation fails in one way, whatever is wrong: false, with an empty output.

// A message is accepted for so long after it was sent, and so long before, since
// clocks differ.
inline constexpr std::int64_t kMessageWindow = 300000;

// Each opens a message once.  A text holds no NUL.

// A line, or a key text, that was sealed for one of this system's keys.
bool OpenLine(std::string_view sealed, std::int64_t now, std::string& line);
bool OpenKeyText(std::string_view sealed, std::int64_t now, std::string& key_text);

// A line that was enciphered by a key text.
bool OpenLineByKeyText(std::string_view key_text, std::string_view sealed, std::int64_t now,
                       std::string& line);

}  // namespace ORBO
