#pragma once

#include <cstddef>

namespace ORBO {

// What the platform's session check is called with: the size of the buffer for the
// user's name, and which checks it makes.
inline constexpr std::size_t kUserNameSize = 493;
inline constexpr int kAllChecks = 15;

// The web-API error code for the result of a session or token check; 0 when it
// passed.
int PermissionError(int check_result);

// The short word that goes with a permission error in the response header
// "x-request-error"; null for a code without one.
const char* PermissionWord(int error);

}  // namespace ORBO
