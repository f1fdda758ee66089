#include "printable.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "util/utf8.h"

namespace ORBO::tool {
namespace {

// C1 control characters, U+0080 to U+009F: terminals obey them too.
bool IsControl(std::string_view character) {
  return character.size() == 2 && character[0] == '\xc2' &&
         static_cast<unsigned char>(character[1]) < 0xa0;
}

}  // namespace

std::string Printable(const std::string& text) {
  std::string result;
  std::string_view rest = text;
  while (!rest.empty()) {
    const std::size_t length = std::max<std::size_t>(UTF8::CharacterLength(rest), 1);
    const std::string_view character = rest.substr(0, length);
    const auto first = static_cast<unsigned char>(character.front());
    const bool shown = length > 1 ? !IsControl(character) : first >= 0x20 && first < 0x7f;
    result.append(shown ? character : "?");
    rest.remove_prefix(length);
  }
  return result;
}

}  // namespace ORBO::tool
