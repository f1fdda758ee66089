#include "util/log_text.h"

namespace ORBO {
namespace {

constexpr std::size_t kMaxLength = 256;

bool IsControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; }

}  // namespace

std::string LogText(std::string_view text) {
  std::string result(text.substr(0, kMaxLength));
  for (char& c : result) {
    if (IsControl(c)) {
      c = '?';
    }
  }
  return result;
}

}  // namespace ORBO
