#include "platform/linux/task_path.h"

#include <climits>

#include "util/paths.h"

namespace ORBO {
namespace {

constexpr char kHexDigits[] = "0123456789ABCDEF";
constexpr std::string_view kEnding = ".json";
constexpr std::string_view kLogEnding = ".log";  // no longer than the other

bool StandsForItself(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
         c == '_';
}

// "" where the name with `ending` behind is none for a file.
std::string Encode(const char* name, std::string_view ending) {
  if (name == nullptr || *name == '\0') {
    return "";
  }
  std::string text;
  for (; *name != '\0'; ++name) {
    const auto byte = static_cast<unsigned char>(*name);
    if (StandsForItself(*name)) {
      text += *name;
    } else {
      text.append(1, '%').append(1, kHexDigits[byte >> 4]).append(1, kHexDigits[byte & 15]);
    }
    if (text.size() + ending.size() > NAME_MAX) {
      return "";
    }
  }
  return text.append(ending);
}

// What Encode made `text` from; anything where it made no such text.
std::string Decode(std::string_view text) {
  const std::string_view digits(kHexDigits);
  std::string name;
  while (!text.empty()) {
    const bool is_encoded = text.size() > 2 && text[0] == '%';
    name +=
        is_encoded ? static_cast<char>(digits.find(text[1]) << 4 | digits.find(text[2])) : text[0];
    text.remove_prefix(is_encoded ? 3 : 1);
  }
  return name;
}

}  // namespace

std::string TaskRootDirectory() { return RootedPath("/run/orbo/tasks"); }

std::string TaskDirectory(const char* owner) {
  const std::string name = Encode(owner, "");
  return name.empty() ? "" : TaskRootDirectory() + "/" + name;
}

std::string TaskOwnerOfDirectory(const std::string& name) {
  std::string owner = Decode(name);
  return Encode(owner.c_str(), "") == name ? owner : "";
}

std::string TaskFileName(const char* id) { return Encode(id, kEnding); }

std::string TaskLogName(const char* id) { return Encode(id, kLogEnding); }

std::string TaskIdOfFile(std::string_view name) {
  if (name.size() <= kEnding.size() || name.substr(name.size() - kEnding.size()) != kEnding) {
    return "";
  }
  std::string id = Decode(name.substr(0, name.size() - kEnding.size()));
  // Of several spellings of an id one is its file's name.
  return TaskFileName(id.c_str()) == name ? id : "";
}

}  // namespace ORBO
