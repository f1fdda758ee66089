#include "request/user_agent.h"

#include <regex.h>

namespace ORBO {
namespace {

constexpr char kMobileBrowsers[] =
    "(SymbianOS|Windows CE|PalmOS|BlackBerry|Vodafone|Opera Mobi|Opera Mini|UP\\.Browser|AvantGo|"
    "EudoraWeb|PLink|Plucker|NetFront|Xiino|Blazer|WebPro|ProxiNet|Elaine)";

bool IsMobileBrowser(const std::string& agent) {
  regex_t pattern{};
  if (regcomp(&pattern, kMobileBrowsers, REG_EXTENDED | REG_ICASE) != 0) {
    return false;
  }
  regmatch_t match{};
  const bool matches = regexec(&pattern, agent.c_str(), 1, &match, 0) == 0;
  regfree(&pattern);
  return matches;
}

// Up to the first NUL; ASCII only, whatever the process's locale.
std::string LowerCase(const std::string& agent) {
  std::string text = agent.c_str();
  for (char& character : text) {
    if (character >= 'A' && character <= 'Z') {
      character = static_cast<char>(character - 'A' + 'a');
    }
  }
  return text;
}

bool Has(const std::string& agent, const char* word) {
  return agent.find(word) != std::string::npos;
}

// The first word that matches decides: browsers name others than themselves.
void ClassifyDevice(const std::string& agent, UserAgentFlags& flags) {
  if (Has(agent, "ipad")) {
    flags.ipad = true;
    flags.iphone = true;
  } else if (Has(agent, "iphone") || Has(agent, "ipod")) {
    flags.iphone = true;
  } else if (Has(agent, "android")) {
    flags.android = true;
  } else if (Has(agent, "playbook")) {
    flags.playbook = true;
  } else if (Has(agent, "blackberry")) {
    flags.blackberry6 = flags.webkit;
  }
}

}  // namespace

UserAgentFlags ClassifyUserAgent(const std::string& agent, bool has_ua_os, bool has_wap_profile) {
  const std::string text = LowerCase(agent);
  UserAgentFlags flags;
  flags.webkit = Has(text, "webkit");
  ClassifyDevice(text, flags);
  // An iPad is an iPhone here.
  const bool known_device = flags.iphone || flags.android || flags.playbook || flags.blackberry6;
  flags.web_app = flags.webkit && known_device;
  flags.mobile = known_device || IsMobileBrowser(text) || has_ua_os || has_wap_profile;
  flags.ie_mobile = flags.mobile && (Has(text, "msie") || Has(text, "iemobile"));
  return flags;
}

}  // namespace ORBO
