#pragma once

#include <algorithm>
#include <string_view>

namespace ORBO {

// Takes the next piece between "&" that is not empty off the parameter line.  False at
// its end.
inline bool TakePiece(std::string_view& line, std::string_view& piece) {
  line.remove_prefix(std::min(line.find_first_not_of('&'), line.size()));
  piece = line.substr(0, line.find('&'));
  line.remove_prefix(piece.size());
  return !piece.empty();
}

// The name of the pair that a piece is, and its value, as they stand.
inline std::string_view NameIn(std::string_view piece) { return piece.substr(0, piece.find('=')); }
inline std::string_view ValueIn(std::string_view piece) {
  return piece.substr(std::min(NameIn(piece).size() + 1, piece.size()));
}

}  // namespace ORBO
