#pragma once

#include <cstddef>

namespace ORBO {

// AuthModule::hash by crypt(3); new salts are for yescrypt.
bool CryptHash(const char* password, const char* setting, char* output, std::size_t size);

}  // namespace ORBO
