#pragma once

#include <string>

namespace ORBO {

// The Cookie header line `line` with the session id `session_id` given as the
// cookie "id".  The first "id=" of the line, an earlier id as a rule, stays under
// the name "abandoned".
std::string WithSessionCookie(std::string line, const std::string& session_id);

}  // namespace ORBO
