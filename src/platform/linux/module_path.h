#pragma once

#include <string>

namespace ORBO {

// Where the module `name` lies, as for dlopen(3): a library with code that few
// requests need and that would cost every process load time.
//
// That is "modules" in the web-API directory; where no such module is installed,
// "../modules" seen from the directory of the library or program that holds this
// code, as in a build tree.  Always absolute; "" where neither has the module.
// The search path of the loader and the process environment have no say but for
// the root prefix.
std::string ModulePath(const std::string& name);

// The function `symbol` of the module `name`, which stays open.  Null, and logged, if
// the module is not installed or cannot be used.
void* ModuleSymbol(const std::string& name, const char* symbol);

}  // namespace ORBO
