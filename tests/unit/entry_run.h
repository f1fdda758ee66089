#pragma once

#include <map>
#include <string>

namespace ORBO {

// Runs a WebEntry in this process on the CGI variables `variables` and gives
// its whole output.  Variables that a run sets are gone afterwards.
std::string RunEntry(const std::map<std::string, std::string>& variables);

// What follows the header block.
std::string BodyOf(const std::string& output);

}  // namespace ORBO
