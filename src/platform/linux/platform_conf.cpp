#include "platform/linux/platform_conf.h"

#include <algorithm>

#include "util/paths.h"
#include "util/read_file.h"
#include "util/trim.h"

namespace ORBO {
namespace {

// The value that the line gives to `key`, or `value` if it is about another one,
// as a comment is: its key begins with "#".
std::string_view ReadLine(std::string_view line, std::string_view key, std::string_view value) {
  const std::size_t equals = line.find('=');
  return equals != std::string_view::npos && Trim(line.substr(0, equals)) == key
             ? Trim(line.substr(equals + 1))
             : value;
}

}  // namespace

std::string PlatformSetting(std::string_view key) {
  std::string text;
  if (!ReadWholeFile(RootedPath("/etc/orbo/platform.conf"), text)) {
    return {};
  }
  std::string_view value;
  std::string_view rest = text;
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    value = ReadLine(line, key, value);
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
  }
  return std::string(value);
}

}  // namespace ORBO
