#pragma once

#include <string>

#include "platform/linux/cleanse.h"

namespace ORBO {

class APIRequest;
class APIResponse;

// What a client says when it asks for a session.
struct LoginParameters {
  LoginParameters() = default;
  ~LoginParameters() { Cleanse(password); }
  // Not copyable: each copy would have to be overwritten too.
  LoginParameters(const LoginParameters&) = delete;
  LoginParameters& operator=(const LoginParameters&) = delete;

  std::string user;
  std::string password;
  std::string application;  // "" for none
  std::string language = "enu";
};

// Whether the URL that this process serves carries a password.  URLs end up in logs,
// histories and referrers.
bool HasPasswordInURL();

// Reads the parameters.  False, with the error set, if one is missing or has no
// acceptable form.  The request's own copy of the password is overwritten.
bool ReadLoginParameters(APIRequest* request, APIResponse* response, LoginParameters& out);

}  // namespace ORBO
