#pragma once

#include <string>

namespace ORBO {

// A shared library that was to be opened.
struct LibraryFile {
  void* handle = nullptr;     // to be closed by dlclose(3); null if it could not be opened
  std::string error;          // why not
  bool is_half_made = false;  // the constructor of a static object threw an exception
};

// Opens the library `path`, as dlopen(3) takes it with `mode`.  One that is half made
// would pass for whole if it were opened again.
LibraryFile OpenLibraryFile(const std::string& path, int mode);

}  // namespace ORBO
