#include <cstring>
#include <string>
#include <string_view>

#include "platform/cgi.h"
#include "platform/cipher.h"
#include "platform/linux/cleanse.h"
#include "platform/linux/param_piece.h"
#include "platform/linux/parameter_cipher.h"
#include "platform/linux/wall_clock.h"
#include "platform/webapi_util.h"

namespace ORBO {
namespace {

// The value of a pair, which may be escaped and may be a quoted JSON string.
std::string SealedText(std::string_view value) {
  std::string text = WebAPIUtil::URLDecode(std::string(value), false);
  const bool is_quoted = text.size() > 1 && text.front() == '"' && text.back() == '"';
  return is_quoted ? text.substr(1, text.size() - 2) : text;
}

struct PlainPairs {
  std::string line;         // the pairs but for the reserved ones
  std::string_view sealed;  // the value of the last enciphered one
  int sealed_count = 0;
};

void AppendPairs(std::string_view line, PlainPairs& out) {
  std::string_view piece;
  while (TakePiece(line, piece)) {
    const std::string_view name = NameIn(piece);
    if (name == kCipherTextMember) {
      out.sealed = ValueIn(piece);
      ++out.sealed_count;
    } else if (name != kCipherTokenMember) {
      out.line.append(out.line.empty() ? "" : "&").append(piece);
    }
  }
}

// False if what is enciphered cannot be opened; `line` is unchanged then.
bool OpenInPlace(char* line) {
  PlainPairs pairs;
  pairs.line.reserve(std::strlen(line));  // growing would leave copies behind
  AppendPairs(line, pairs);
  if (pairs.sealed_count == 0) {
    // The name stands somewhere else, as in a nested object.
    return true;
  }
  SecretText opened;
  if (!OpenLine(SealedText(pairs.sealed), WallClock(), opened.text)) {
    return false;
  }
  AppendPairs(opened.text, pairs);
  if (pairs.sealed_count > 1) {
    Cleanse(pairs.line);
    return false;
  }
  std::memcpy(line, pairs.line.c_str(), pairs.line.size() + 1);
  Cleanse(pairs.line);
  return true;
}

}  // namespace
}  // namespace ORBO

int OrboCgiDetectAndDecryptParamLine(char* line) {
  if (line == nullptr) {
    return 0;
  }
  // Nearly all lines are plain, and cost no more than this look.
  return std::strstr(line, ORBO::kCipherTextMember) == nullptr || ORBO::OpenInPlace(line) ? 1 : 0;
}
