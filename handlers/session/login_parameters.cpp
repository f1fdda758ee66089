#include "login_parameters.h"

#include <webapi/APIRequest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "platform/linux/password_check.h"
#include "platform/webapi_util.h"
#include "session_errors.h"
#include "util/json_types.h"

namespace ORBO {
namespace {

constexpr std::size_t kLongestApplication = 64;

bool IsLetterOrDigit(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

bool IsApplication(const std::string& name) {
  return name.size() <= kLongestApplication && std::all_of(name.begin(), name.end(), [](char c) {
           return IsLetterOrDigit(c) || c == '.' || c == '_' || c == '-';
         });
}

bool IsLanguage(const std::string& code) {
  return code.size() == 3 &&
         std::all_of(code.begin(), code.end(), [](char c) { return c >= 'a' && c <= 'z'; });
}

// Moves the password out of the request, so that nothing that handles the request
// later finds it there.
bool TakePassword(APIRequest* request, std::string& password) {
  const Json::Value none;
  const Json::Value& value = request->GetParamRef("password", none);
  const std::string_view text = JSON::StringView(value);
  if (text.empty()) {
    return false;
  }
  password.assign(text);
  explicit_bzero(const_cast<char*>(text.data()), text.size());
  return true;
}

bool ReadOptional(APIRequest* request, const char* name, bool (*validator)(const std::string&),
                  std::string& value) {
  const auto parameter = request->GetAndCheckString(name, APIRequest::PARAM_OPTIONAL, validator);
  if (parameter.IsSet() && !parameter.IsReset()) {
    value = parameter.Get();
  }
  return !parameter.IsInvalid();
}

}  // namespace

bool HasPasswordInURL() {
  // The process's own: a call of a compound request does not show the URL any more.
  const char* const variable = std::getenv("QUERY_STRING");
  const std::string query = variable == nullptr ? "" : variable;
  Json::Value pairs(Json::objectValue);
  // A list of calls in the URL would hold this call's password, too.
  return !WebAPIUtil::strPairToJsonObj(query, pairs, true, false) || JSON::Has(pairs, "password") ||
         JSON::Has(pairs, "compound");
}

bool ReadLoginParameters(APIRequest* request, APIResponse* response, LoginParameters& out) {
  const bool has_password = TakePassword(request, out.password);
  const auto user = request->GetAndCheckString("user", APIRequest::PARAM_REQUIRED, IsUserName);
  const char* wrong = nullptr;
  if (user.IsInvalid() || user.IsReset()) {
    wrong = "user";
  } else if (!has_password) {
    wrong = "password";
  } else if (!ReadOptional(request, "application", IsApplication, out.application)) {
    wrong = "application";
  } else if (!ReadOptional(request, "language", IsLanguage, out.language)) {
    wrong = "language";
  }
  if (wrong != nullptr) {
    RefuseParameter(response, wrong);
    return false;
  }
  out.user = user.Get();
  return true;
}

}  // namespace ORBO
