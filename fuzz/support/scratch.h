#pragma once

#include <string>
#include <string_view>

namespace ORBO {

// A directory of this process, in memory unless TMPDIR names another place.  Goes with
// the process.
const std::string& ScratchDirectory();

// Makes `text` the content of the file `path` below the scratch directory, and makes the
// directories above it.
void WriteScratch(const std::string& path, std::string_view text);

// Makes the scratch directory the root of the system's fixed places.
void EnterScratchRoot();

}  // namespace ORBO
