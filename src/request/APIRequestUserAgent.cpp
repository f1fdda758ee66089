#include "request/APIRequestPrivate.h"
#include "request/user_agent.h"

namespace ORBO {

void APIRequestPrivate::InitUA() {
  if (HasData("userAgent", "initialized")) {
    return;
  }
  // The store refuses the mark and all flags, since none is an object: every
  // query classifies anew and answers its default.
  SetData("userAgent", Json::Value("initialized"), true);
  if (!HasData("environ", "HTTP_USER_AGENT")) {
    return;
  }
  const UserAgentFlags flags =
      ClassifyUserAgent(GetText("environ", "HTTP_USER_AGENT", ""), HasData("environ", "HTTP_UA_OS"),
                        HasData("environ", "HTTP_X_WAP_PROFILE"));
  SetData("userAgent", Json::Value("uaMobile"), flags.mobile);
  SetData("userAgent", Json::Value("uaIPhone"), flags.iphone);
  SetData("userAgent", Json::Value("uaAndroid"), flags.android);
  SetData("userAgent", Json::Value("uaIEMobile"), flags.ie_mobile);
  SetData("userAgent", Json::Value("uaIPad"), flags.ipad);
  SetData("userAgent", Json::Value("uaPlayBook"), flags.playbook);
  SetData("userAgent", Json::Value("uaBlackBerry6"), flags.blackberry6);
  SetData("userAgent", Json::Value("uaWebKit"), flags.webkit);
  SetData("userAgent", Json::Value("uaSupportWebAPP"), flags.web_app);
}

bool APIRequestPrivate::GetUserAgentFlag(const char* key) {
  InitUA();
  return GetFlag("userAgent", key, false);
}

bool APIRequest::IsMobile() { return private_->GetUserAgentFlag("uaMobile"); }

bool APIRequest::IsIPhone() { return private_->GetUserAgentFlag("uaIPhone"); }

bool APIRequest::IsAndroid() { return private_->GetUserAgentFlag("uaAndroid"); }

bool APIRequest::IsIEMobile() { return private_->GetUserAgentFlag("uaIEMobile"); }

bool APIRequest::IsIPad() { return private_->GetUserAgentFlag("uaIPad"); }

bool APIRequest::IsPlayBook() { return private_->GetUserAgentFlag("uaPlayBook"); }

bool APIRequest::IsBlackBerry6() { return private_->GetUserAgentFlag("uaBlackBerry6"); }

bool APIRequest::IsWebKit() { return private_->GetUserAgentFlag("uaWebKit"); }

bool APIRequest::IsSupportWebApp() { return private_->GetUserAgentFlag("uaSupportWebAPP"); }

}  // namespace ORBO
