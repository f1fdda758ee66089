#pragma once

#include <json/value.h>

#include <string>

namespace ORBO {

// Runs a call in the confinement hat of its method, of its API, or in the
// default hat, whichever exists first, and goes back afterwards.  The hats
// entered so far stand in the environment variable "APPARMOR_HAT_ARRAY" as a
// JSON list, so that a call inside a call finds its way back.
//
// Does nothing in a process that is not confined.
class HatGuard {
 public:
  HatGuard(const std::string& api, const std::string& method);
  ~HatGuard();

  HatGuard(const HatGuard&) = delete;
  HatGuard& operator=(const HatGuard&) = delete;

 private:
  void Leave();

  bool changed_ = false;
  Json::Value saved_hats_;
};

}  // namespace ORBO
