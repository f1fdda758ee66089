#pragma once

#include <string>

namespace example {

// The name under which a file is kept that a client calls `client_name`: its part
// after the last "/" or "\", without dots and blanks in front and blanks behind, with
// "_" for every byte of a control character or of malformed UTF-8, cut to 255 bytes and
// never empty.  From 2 on, `number` stands in front of the extension: "report (2).pdf".
std::string FileName(const std::string& client_name, unsigned number = 1);

// Whether a file can be kept under exactly this name.
inline bool IsFileName(const std::string& name) { return FileName(name) == name; }

}  // namespace example
