#include "read_line.h"

#include <unistd.h>

#include "platform/linux/cleanse.h"

namespace ORBO::tool {

bool ReadLine(int descriptor, std::size_t limit, std::string& line) {
  Cleanse(line);
  // The memory of a secret is not to be left behind by growing.
  line.reserve(limit + 1);
  char byte = 0;
  ssize_t count = 0;
  while (line.size() <= limit && (count = read(descriptor, &byte, 1)) == 1 && byte != '\n') {
    line.push_back(byte);
  }
  const bool at_end = count == 0 && line.empty();
  if (count < 0 || at_end || line.size() > limit) {
    Cleanse(line);
    return false;
  }
  return true;
}

}  // namespace ORBO::tool
