#include "runner/HatGuard.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "platform/confinement.h"
#include "util/hat_token.h"
#include "util/json_text.h"
#include "util/json_types.h"
#include "util/log.h"
#include "util/log_text.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "APIRunner.cpp";
constexpr char kHatVariable[] = "APPARMOR_HAT_ARRAY";

Json::Value ReadHats() {
  Json::Value hats;
  if (const char* text = std::getenv(kHatVariable)) {
    JSON::Parse(text, hats);
  }
  return JSON::IsArray(hats) && !JSON::IsNull(hats) ? hats : Json::Value(Json::arrayValue);
}

void WriteHats(const Json::Value& hats) { setenv(kHatVariable, JSON::ToText(hats).c_str(), 1); }

// Enters the first hat that exists and returns its name; "EmptyHat" for none.
std::string EnterHat(const std::string& api, const std::string& method) {
  std::string method_hat = api;
  method_hat.append(".").append(method);
  for (const std::string& hat : {method_hat, api, std::string("DefaultHat")}) {
    if (ORBO_aa_change_hat(hat.c_str(), kHatToken) == 0) {
      return hat;
    }
  }
  Log(LOG_ERR, "%s:%d AppArmor: chagehat failed [%s]", kSource, __LINE__, std::strerror(errno));
  return "EmptyHat";
}

}  // namespace

HatGuard::HatGuard(const std::string& api, const std::string& method) {
  if (ORBO_aa_has_profile_restricted() == 0) {
    return;
  }
  saved_hats_ = ReadHats();
  Json::Value hats = saved_hats_;
  hats.append(EnterHat(api, method));
  changed_ = true;
  WriteHats(hats);
}

HatGuard::~HatGuard() {
  if (changed_) {
    Leave();
    WriteHats(saved_hats_);
  }
}

void HatGuard::Leave() {
  if (saved_hats_.empty()) {
    if (ORBO_aa_change_hat(nullptr, kHatToken) != 0) {
      Log(LOG_ERR, "%s:%d AppArmor: chagehat Original Hat failed [%s]", kSource, __LINE__,
          std::strerror(errno));
    }
    return;
  }
  const std::string hat = JSON::AsString(saved_hats_[saved_hats_.size() - 1]);
  if (ORBO_aa_change_hat(hat.c_str(), kHatToken) != 0) {
    Log(LOG_ERR, "%s:%d AppArmor: chagehat [%s] failed [%s]", kSource, __LINE__,
        LogText(hat).c_str(), std::strerror(errno));
  }
}

}  // namespace ORBO
