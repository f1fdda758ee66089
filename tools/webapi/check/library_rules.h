#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "check/DescribedFile.h"
#include "check/path_rules.h"

namespace ORBO::tool {

// Opens the handler libraries that `files`, descriptions of the working directory,
// name, and compares their tables with the descriptions.  `are_all` tells whether
// nothing else describes anything.  Opening one may take so many `seconds`.  Returns
// the number of libraries.
std::size_t CheckLibraries(const std::vector<std::unique_ptr<DescribedFile>>& files, bool are_all,
                           int seconds, PathCheck& paths, Findings& findings);

}  // namespace ORBO::tool
