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

// The candidate that is read for `api`: the longest one that exists; empty if none
// does.
std::string ExistingCandidate(const std::string& api);

// All description files of the working directory, in name order.
std::vector<std::string> DescriptionFileNames();

}  // namespace ORBO
