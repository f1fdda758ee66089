#pragma once

#include <cstddef>
#include <string>

#include "check/path_rules.h"

namespace ORBO::tool {

struct CheckOptions {
  bool opens_libraries;
  int seconds;  // that opening a library may take
};

// What has been checked.
struct CheckCounts {
  std::size_t files = 0;
  std::size_t apis = 0;
  std::size_t libraries = 0;
};

// Checks all descriptions and the defaults of the directory `path`, or the one file
// `path`, a description or the defaults, with what lies beside it.
void CheckPath(const std::string& path, const CheckOptions& options, PathCheck& paths,
               CheckCounts& counts, Findings& findings);

}  // namespace ORBO::tool
