#pragma once

#include <string>

namespace ORBO::tool {

// Each gives the public key (see spki.h), in DER.  False, and the reason in `complaint`,
// if there is none.

// From a file that holds a key on the curve P-256 in PEM.
bool ReadKeyFile(const std::string& path, std::string& spki, std::string& complaint);
// From its text in base64 or base64url, with padding or without.
bool ReadKeyText(const std::string& text, std::string& spki, std::string& complaint);

}  // namespace ORBO::tool
