#pragma once

#include <string>
#include <vector>

namespace ORBO {

// The description files that may hold the API `api`, relative to the web-API
// directory, shortest name first; the longest one that exists is used.  They
// are the dot-separated prefixes of the name from the second dot on and the
// name itself, with ".lib" behind, at most four.
//
// None for an empty name, and none for a name with "/" or NUL: a client must
// not choose a file outside the directory.
std::vector<std::string> DescriptionCandidates(const std::string& api);

}  // namespace ORBO
