#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ORBO {

// Names of stored records that are drawn at random: a letter and then base64 with
// the URL alphabet.  With the letter in front a name is never a JSON number and
// never looks like an option of a command.

// A new name that begins with `letter` and holds `bytes` random bytes.
std::string NewKeyName(char letter, std::size_t bytes);

// Whether `text` has the form of such a name.  It is a plain file name then.
bool IsKeyName(std::string_view text, char letter, std::size_t bytes);

}  // namespace ORBO
