#pragma once

#include <string>

namespace ORBO {

// Adds one to the counter of a call in the counter file of its API, and makes
// `directory` and the file where they are missing.  Many processes may do so at
// once; one that cannot get the file's lock within two seconds gives up.  False if
// the call is not counted, and never logged: nothing depends on it.
bool CountCall(const std::string& directory, const std::string& api, const std::string& method,
               int version);

}  // namespace ORBO
