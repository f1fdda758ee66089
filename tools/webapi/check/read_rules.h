#pragma once

#include <string>
#include <vector>

#include "check/Findings.h"

namespace ORBO::tool {

// Where root runs this command: reports the files `names` of the working directory that
// the CGI programs, which have less rights, cannot read.  `shown` stands before the names.
void CheckReading(const std::vector<std::string>& names, const std::string& shown,
                  Findings& findings);

}  // namespace ORBO::tool
