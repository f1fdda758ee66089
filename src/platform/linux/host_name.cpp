#include <algorithm>
#include <cstddef>
#include <string_view>

#include "platform/network.h"

namespace {

constexpr std::size_t kLongestName = 253;
constexpr std::size_t kLongestLabel = 63;

// Without the C library's tests of characters, which follow the process's locale.
bool IsDigit(char character) { return character >= '0' && character <= '9'; }

bool IsHexDigit(char character) {
  const char lower = static_cast<char>(character | 0x20);
  return IsDigit(character) || (lower >= 'a' && lower <= 'f');
}

bool IsLabelCharacter(char character) {
  const char lower = static_cast<char>(character | 0x20);
  return IsDigit(character) || (lower >= 'a' && lower <= 'z') || character == '-';
}

bool IsLabel(std::string_view label) {
  return !label.empty() && label.size() <= kLongestLabel && label.front() != '-' &&
         label.back() != '-' && std::all_of(label.begin(), label.end(), IsLabelCharacter);
}

bool IsNumber(std::string_view label) {
  if (label.size() >= 2 && label[0] == '0' && (label[1] | 0x20) == 'x') {
    return std::all_of(label.begin() + 2, label.end(), IsHexDigit);
  }
  return std::all_of(label.begin(), label.end(), IsDigit);
}

// Whether `name` is a name of at least `fewest` labels.
bool IsName(const char* text, std::size_t fewest) {
  std::string_view name = text != nullptr ? text : "";
  if (!name.empty() && name.back() == '.') {
    name.remove_suffix(1);
    fewest = std::max<std::size_t>(fewest, 2);
  }
  if (name.size() > kLongestName) {
    return false;
  }
  std::size_t labels = 1;
  for (std::size_t dot = name.find('.'); dot != std::string_view::npos; dot = name.find('.')) {
    if (!IsLabel(name.substr(0, dot))) {
      return false;
    }
    name.remove_prefix(dot + 1);
    ++labels;
  }
  return labels >= fewest && IsLabel(name) && !IsNumber(name);
}

}  // namespace

int BlQLIBIsHostname(const char* name) { return IsName(name, 1) ? 1 : 0; }

int BlQLIBIsDomain(const char* name) { return IsName(name, 2) ? 1 : 0; }
