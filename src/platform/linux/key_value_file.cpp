#include <string>
#include <string_view>

#include "platform/files.h"
#include "platform/linux/key_value_text.h"
#include "util/read_file.h"

int QLIBCFileCheckKeyValue(const char* path, const char* key, const char* value, int /*flags*/) {
  std::string text;
  if (path == nullptr || key == nullptr || value == nullptr || !ORBO::ReadWholeFile(path, text)) {
    return 0;
  }
  std::string_view found = ORBO::ValueOfKey(text, key);
  if (found.size() >= 2 && found.front() == '"' && found.back() == '"') {
    found = found.substr(1, found.size() - 2);
  }
  return found == value ? 1 : 0;
}
