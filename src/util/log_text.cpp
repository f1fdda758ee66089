#include "util/log_text.h"

namespace ORBO {
namespace {

bool IsControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; }

}  // namespace

std::string LogText(std::string_view text, std::size_t limit) {
  std::string result(text.substr(0, limit));
  for (char& c : result) {
    if (IsControl(c)) {
      c = '?';
    }
  }
  return result;
}

}  // namespace ORBO
