#include <webapi/APIRunner.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <utility>

#include "platform/users.h"
#include "util/WorkingDirectoryGuard.h"
#include "util/error_codes.h"
#include "util/exception_text.h"
#include "util/json_types.h"
#include "util/log.h"
#include "util/paths.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "APIRunner.cpp";
constexpr char kUserVariable[] = "USERNAME";
constexpr char kAPIUserVariable[] = "ORBO_WEBAPI_USERNAME";

// Shows `user` as the caller in the environment.  At the end both variables get
// the earlier caller's name; without one both keep `user`, as programs started by
// the handler expect.
class CallerNameGuard {
 public:
  explicit CallerNameGuard(const char* user) {
    if (const char* const earlier = std::getenv(kAPIUserVariable)) {
      earlier_ = earlier;
    }
    Show(user);
  }
  ~CallerNameGuard() {
    if (earlier_) {
      Show(earlier_->c_str());
    }
  }
  CallerNameGuard(const CallerNameGuard&) = delete;
  CallerNameGuard& operator=(const CallerNameGuard&) = delete;

 private:
  static void Show(const char* user) {
    setenv(kUserVariable, user, 1);
    setenv(kAPIUserVariable, user, 1);
  }

  std::optional<std::string> earlier_;
};

// What a CGI request of `user` would have brought.
Json::Value RequestOptions(const char* api, int version, const char* method,
                           const Json::Value& params, const Json::Value& attr, const char* user) {
  Json::Value options(Json::objectValue);
  Json::Value& session = options["session"];
  session["username"] = user;
  session["isAdmin"] = QLIBGroupIsAdminGroupMem(user, 0) == 1;
  session["isTimeout"] = false;
  session["isAuthorized"] = true;
  options["environ"]["REQUEST_METHOD"] = "POST";
  // Parameters that are no object leave the call without a name, which the runner
  // refuses.
  Json::Value& post = options["postParam"] = params;
  JSON::Set(post, "api", api);
  JSON::Set(post, "method", method);
  JSON::Set(post, "version", version);
  options["attr"] = attr;
  return options;
}

Json::Value Failure(int code) {
  Json::Value body(Json::objectValue);
  body["success"] = false;
  body["error"]["code"] = code;
  return body;
}

}  // namespace

void APIRunner::Exec(Json::Value& result, const char* api, int version, const char* method,
                     const Json::Value& params, const Json::Value& attr, const char* user) {
  try {
    APIRunner runner;
    if (api == nullptr || method == nullptr || user == nullptr) {
      result = Failure(kErrorBadRequest);
      return;
    }
    const WorkingDirectoryGuard directory(RootedPath(kWebAPIDirectory));
    if (!directory.IsEntered()) {
      Log(LOG_ERR, "%s:%d cannot enter the web-API directory: %s", kSource, __LINE__,
          std::strerror(errno));
      result = Failure(kErrorNoSuchAPI);
      return;
    }
    const CallerNameGuard caller(user);
    runner.Run(RequestOptions(api, version, method, params, attr, user));
    result = runner.GetResponse();
  } catch (...) {
    Log(LOG_ERR, "%s:%d call in the process ended by an exception: %s", kSource, __LINE__,
        CurrentExceptionText().c_str());
    result = Failure(kErrorNoResult);
  }
}

void APIRunner::Exec(Json::Value& result, const char* api, int version, const char* method,
                     const Json::Value& params, const char* user) {
  Exec(result, api, version, method, params, Json::Value(), user);
}

}  // namespace ORBO
