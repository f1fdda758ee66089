#include "transfer/content_disposition.h"

#include "platform/webapi_util.h"
#include "util/utf8.h"

namespace ORBO {
namespace {

bool IsControl(std::string_view character) {
  const auto byte = static_cast<unsigned char>(character[0]);
  // U+0080 to U+009F are C2 80 to C2 9F.
  return byte < 0x20 || byte == 0x7F ||
         (byte == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0);
}

// The name that clients may be shown, as well-formed UTF-8.
std::string FileName(std::string_view name) {
  std::string clean;
  while (!name.empty()) {
    const bool is_ascii = static_cast<unsigned char>(name.front()) < 0x80;
    const std::size_t length = is_ascii ? 1 : UTF8::CharacterLength(name);
    const std::string_view character = name.substr(0, length);
    if (length == 0 || IsControl(character) || character == "/" || character == "\\") {
      clean += '_';
      name.remove_prefix(length == 0 ? UTF8::MalformedLength(name) : length);
    } else {
      clean += character;
      name.remove_prefix(length);
    }
  }
  return clean;
}

// The name in what every client reads alike: clients differ over escapes in a quoted
// text, and some decode "%" in it.
std::string AsciiName(const std::string& name) {
  std::string ascii;
  for (const char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      ascii += c == '"' || c == '%' ? '_' : c;
    } else if (byte >= 0xC0) {
      ascii += '_';  // once for a character
    }
  }
  return ascii;
}

}  // namespace

std::string AttachmentDisposition(std::string_view name) {
  const std::string file_name = FileName(name);
  const std::string ascii = AsciiName(file_name);
  std::string value = "attachment; filename=\"" + ascii + "\"";
  if (ascii != file_name) {
    value += "; filename*=UTF-8''" + WebAPIUtil::URLEncode(file_name);
  }
  return value;
}

}  // namespace ORBO
