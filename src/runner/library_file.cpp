#include "runner/library_file.h"

#include <dlfcn.h>

#include "util/exception_text.h"

namespace ORBO {

LibraryFile OpenLibraryFile(const std::string& path, int mode) {
  // Through a pointer that the compiler does not see through: contrary to its
  // declaration dlopen lets pass what constructors of static objects throw.
  void* (*const volatile open)(const char*, int) = dlopen;
  LibraryFile file;
  try {
    file.handle = open(path.c_str(), mode);
    if (file.handle == nullptr) {
      file.error = dlerror();
    }
  } catch (...) {
    file.error = CurrentExceptionText();
    file.is_half_made = true;
  }
  return file;
}

}  // namespace ORBO
