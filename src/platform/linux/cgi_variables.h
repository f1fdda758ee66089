#pragma once

#include <string_view>

namespace ORBO {

// The value of a CGI variable, valid while the environment is not changed; empty
// when it is not set.
std::string_view CgiVariable(const char* name);

// "http" or "https", as the web server took the request.
std::string_view RequestScheme();

}  // namespace ORBO
