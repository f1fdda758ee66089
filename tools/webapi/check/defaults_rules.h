#pragma once

#include <string>

#include "check/Findings.h"

namespace ORBO::tool {

// Judges the defaults file `name` of the working directory, which findings call `shown`.
void CheckDefaults(const std::string& name, const std::string& shown, Findings& findings);

}  // namespace ORBO::tool
