#include "file_name.h"

#include <algorithm>

namespace example {
namespace {

// The limit of the file systems, in bytes.
constexpr std::size_t kLongestName = 255;
constexpr std::size_t kLongestExtension = 16;

constexpr char kBlank[] = " ";

unsigned char ByteAt(const std::string& text, std::size_t at) {
  return static_cast<unsigned char>(text[at]);
}

bool IsContinuation(const std::string& text, std::size_t at) {
  return at < text.size() && (ByteAt(text, at) & 0xC0U) == 0x80;
}

// The bytes of the character at `at` (RFC 3629); 0 where it is malformed or a control
// character.
std::size_t CharacterLength(const std::string& text, std::size_t at) {
  const unsigned char first = ByteAt(text, at);
  if (first < 0x80) {
    return first < ' ' || first == 0x7F ? 0 : 1;
  }
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4) {
    return 0;
  }
  for (std::size_t i = 1; i < length; ++i) {
    if (!IsContinuation(text, at + i)) {
      return 0;
    }
  }
  // The bounds of the second byte: control characters, overlong forms, surrogates and
  // what lies beyond Unicode are left out.
  const unsigned char second = ByteAt(text, at + 1);
  const bool is_out = (first == 0xC2 && second < 0xA0) || (first == 0xE0 && second < 0xA0) ||
                      (first == 0xED && second > 0x9F) || (first == 0xF0 && second < 0x90) ||
                      (first == 0xF4 && second > 0x8F);
  return is_out ? 0 : length;
}

std::string WithoutBlanksBehind(std::string text) {
  text.erase(text.find_last_not_of(kBlank) + 1);
  return text;
}

// Cuts well-formed UTF-8 between two characters.
std::string Cut(std::string text, std::size_t length) {
  if (text.size() > length) {
    while (length > 0 && IsContinuation(text, length)) {
      --length;
    }
    text.resize(length);
  }
  return text;
}

std::string Clean(const std::string& client_name) {
  const std::size_t separator = client_name.find_last_of("/\\");
  const std::size_t begin =
      client_name.find_first_not_of(". ", separator == std::string::npos ? 0 : separator + 1);
  std::string name;
  for (std::size_t at = std::min(begin, client_name.size()); at < client_name.size();) {
    const std::size_t length = CharacterLength(client_name, at);
    name += length == 0 ? "_" : client_name.substr(at, length);
    at += std::max<std::size_t>(length, 1);
  }
  name = WithoutBlanksBehind(name);
  return name.empty() ? "file" : name;
}

}  // namespace

std::string FileName(const std::string& client_name, unsigned number) {
  const std::string name = Clean(client_name);
  const std::size_t dot = name.rfind('.');
  const bool has_extension = dot != std::string::npos && name.size() - dot <= kLongestExtension;
  const std::string tail = (number < 2 ? "" : " (" + std::to_string(number) + ")") +
                           (has_extension ? name.substr(dot) : "");
  const std::string stem = has_extension ? name.substr(0, dot) : name;
  return WithoutBlanksBehind(Cut(stem, kLongestName - tail.size()) + tail);
}

}  // namespace example
