#pragma once

namespace ORBO {

// The web-API error code for the result of a session or token check; 0 when it
// passed.
int PermissionError(int check_result);

// The short word that goes with a permission error in the response header
// "x-request-error"; null for a code without one.
const char* PermissionWord(int error);

}  // namespace ORBO
