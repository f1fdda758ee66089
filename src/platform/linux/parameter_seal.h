#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ORBO {

// Enciphers parameter lines as clients do, for scripts.

// Seals `line` for the public key `spki` (see spki.h) as sent at the time `now`, in
// milliseconds since the epoch: as one text, or as a token and a text.  False if that is
// no key, or where the crypto module cannot be used.
bool SealAsText(std::string_view spki, std::string_view line, std::int64_t now, std::string& text);
bool SealAsPair(std::string_view spki, std::string_view line, std::int64_t now, std::string& token,
                std::string& text);

}  // namespace ORBO
