#pragma once

#include <string>

namespace ORBO {

// A cookie with the attributes of RFC 6265bis, for APIResponse::AddCookie.
struct APICookie {
  enum class SameSite {
    kUnset,   // the attribute is left out; browsers then take kLax
    kStrict,  // sent with requests of the own site only
    kLax,     // also when a link of another site leads here
    kNone,    // with every request; browsers want `secure` then
  };

  std::string name;
  std::string value;  // sent percent-encoded
  std::string path = "/";
  std::string domain;  // "" for the host that answers and no other
  // Minutes; 0 keeps the cookie until the browser ends, a negative number deletes
  // it.
  long expire_minutes = 0;
  bool secure = false;     // over https only
  bool http_only = false;  // out of reach of scripts
  SameSite same_site = SameSite::kUnset;
};

}  // namespace ORBO
