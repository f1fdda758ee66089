#pragma once

#include <string_view>

namespace ORBO {

// `text` without the blanks and tabs around it.
inline std::string_view Trim(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(" \t");
  return begin == std::string_view::npos
             ? std::string_view()
             : text.substr(begin, text.find_last_not_of(" \t") - begin + 1);
}

}  // namespace ORBO
