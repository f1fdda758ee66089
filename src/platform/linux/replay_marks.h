#pragma once

#include <cstdint>
#include <string>

namespace ORBO {

// Marks of the enciphered messages that were accepted, an empty file each below
// /run/orbo/replays, so that nobody sends one a second time.  They are deleted when
// their messages have long been too old to be accepted.

// Marks the message `name`, which is part of a file name, of the time `sent`.  False
// if it is marked already, and, with a line in the log, if it cannot be marked: then
// nobody could tell a second one.  Times are milliseconds since the epoch.
bool MarkMessage(const std::string& name, std::int64_t sent, std::int64_t now);

}  // namespace ORBO
