#pragma once

#include <string>
#include <string_view>

namespace ORBO {

// Texts as the library takes them.
inline const unsigned char* Bytes(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}
inline unsigned char* Bytes(std::string& text) {
  return reinterpret_cast<unsigned char*>(text.data());
}

}  // namespace ORBO
