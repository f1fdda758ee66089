#include "platform/linux/key_value_text.h"

#include <algorithm>

#include "util/trim.h"

namespace ORBO {
namespace {

// The value that the line gives to `key`, or `value` if it is about another one.
std::string_view ReadLine(std::string_view line, std::string_view key, std::string_view value) {
  const std::size_t equals = line.find('=');
  return equals != std::string_view::npos && Trim(line.substr(0, equals)) == key
             ? Trim(line.substr(equals + 1))
             : value;
}

}  // namespace

std::string_view ValueOfKey(std::string_view text, std::string_view key) {
  std::string_view value;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    value = ReadLine(line, key, value);
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
  return value;
}

}  // namespace ORBO
