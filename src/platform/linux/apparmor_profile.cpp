#include "platform/linux/apparmor_profile.h"

namespace ORBO {

bool IsConfining(std::string_view text) {
  // The kernel ends the text with a line feed, older ones with NUL.
  text = text.substr(0, text.find_last_not_of(std::string_view("\n\0", 2)) + 1);
  // A profile may be loaded in a mode in which it confines nothing.
  static constexpr std::string_view kMode = " (unconfined)";
  const bool has_mode =
      text.size() >= kMode.size() && text.substr(text.size() - kMode.size()) == kMode;
  return text != "unconfined" && !has_mode;
}

}  // namespace ORBO
