#pragma once

#include <string>
#include <string_view>

namespace ORBO {

// Base64 with the URL alphabet and without padding (RFC 4648, section 5).
std::string Base64Url(std::string_view bytes);

// The value of a character of that alphabet; -1 for any other.
int Base64UrlDigit(char c);

// Reads what Base64Url writes and nothing else: of the texts that could stand for the
// same bytes only one is read.  False, and `bytes` empty, for any other text.
bool DecodeBase64Url(std::string_view text, std::string& bytes);

}  // namespace ORBO
