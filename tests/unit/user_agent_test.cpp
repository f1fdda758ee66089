#include "request/user_agent.h"

#include <gtest/gtest.h>

namespace ORBO {
namespace {

// The flags that are set, one letter each.
std::string Letters(const UserAgentFlags& flags) {
  const auto letter = [](bool set, const char* text) { return set ? std::string(text) : ""; };
  return letter(flags.mobile, "m") + letter(flags.iphone, "i") + letter(flags.android, "a") +
         letter(flags.ie_mobile, "e") + letter(flags.ipad, "t") + letter(flags.playbook, "p") +
         letter(flags.blackberry6, "b") + letter(flags.webkit, "w") + letter(flags.web_app, "s");
}

TEST(UserAgent, IsClassified) {
  const std::pair<std::string, const char*> rows[] = {
      {"", ""},
      {"Mozilla/5.0 (iPad; U) AppleWebKit/531 Mobile Safari", "mitws"},
      {"Mozilla/5.0 (iPad) Android", "mit"},
      {"Mozilla/5.0 (iPhone; Android) AppleWebKit", "miws"},
      {"IPOD", "mi"},
      {"Mozilla/5.0 (Linux; ANDROID 9; PlayBook) AppleWebKit", "maws"},
      {"Mozilla/5.0 (Android; MSIE 9)", "mae"},
      {"Mozilla/5.0 (PlayBook; BlackBerry) AppleWebKit", "mpws"},
      {"BlackBerry9700/5.0", "m"},
      {"Mozilla/5.0 (BlackBerry 9800) AppleWebKit", "mbws"},
      {"Mozilla/4.0 (Windows CE; IEMobile 7)", "me"},
      {"Up.Browser/6", "m"},
      {"upXbrowser", ""},
      {"Mozilla/5.0 (X11) AppleWebKit", "w"},
      {std::string("webkit\0ipad", 11), "w"},
  };
  for (const auto& [agent, flags] : rows) {
    EXPECT_EQ(flags, Letters(ClassifyUserAgent(agent, false, false))) << agent;
  }
  const std::string desktop = "Mozilla/5.0 (MSIE 9.0; Windows NT)";
  EXPECT_EQ("", Letters(ClassifyUserAgent(desktop, false, false)));
  EXPECT_EQ("me", Letters(ClassifyUserAgent(desktop, true, false)));
  EXPECT_EQ("me", Letters(ClassifyUserAgent(desktop, false, true)));
}

}  // namespace
}  // namespace ORBO
