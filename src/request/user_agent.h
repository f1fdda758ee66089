#pragma once

#include <string>

namespace ORBO {

// What a client's browser is.
struct UserAgentFlags {
  bool mobile = false;
  bool iphone = false;  // also for an iPad and an iPod
  bool android = false;
  bool ie_mobile = false;
  bool ipad = false;
  bool playbook = false;
  bool blackberry6 = false;
  bool webkit = false;
  bool web_app = false;  // can run the web pages as an application of its own
};

// Classifies a client by its User-Agent header (RFC 9110, section 10.1.5), which
// counts up to its first NUL, and by whether it sent the headers "UA-OS" and
// "X-Wap-Profile".
UserAgentFlags ClassifyUserAgent(const std::string& agent, bool has_ua_os, bool has_wap_profile);

}  // namespace ORBO
