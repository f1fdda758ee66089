#pragma once

#include <string>
#include <string_view>

namespace ORBO {

// Fixed places of the system.
inline constexpr std::string_view kWebAPIDirectory = "/usr/orbo/orboman/webapi/";

// Where the fixed absolute path `path` really lies: below the directory that
// the environment variable WEBAPI_ROOT names, for installations beside the
// system's own and for tests, else where it says.  A process that runs with
// raised privileges ignores the variable.
std::string RootedPath(std::string_view path);

}  // namespace ORBO
