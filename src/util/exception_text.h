#pragma once

#include <string>

namespace ORBO {

// What the exception being handled says.  Call it inside a catch block only.
std::string CurrentExceptionText();

}  // namespace ORBO
