#pragma once

#include <string>
#include <string_view>

namespace ORBO {

// The file that tells who holds the application privilege `name`; "" if no privilege can
// have that name.
std::string PrivilegeFile(std::string_view name);

}  // namespace ORBO
