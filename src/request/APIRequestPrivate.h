#pragma once

#include <json/value.h>
#include <sys/types.h>

#include <cstdint>
#include <string>

#include <webapi/APIBase.h>
#include <webapi/APIParameter.h>
#include <webapi/APIRequest.h>

#include "util/SharedText.h"

namespace ORBO {

// The state and the rules of APIRequest.
//
// Sections: "environ" and "cookie" (text only), "reqLib", "session", "param",
// "attr", "url" and "userAgent".
class APIRequestPrivate : public APIBase {
 public:
  explicit APIRequestPrivate(APIRequest* owner);

  void Init(const Json::Value& request);

  // Each takes its argument by value and moves it into the store.
  void InitEnv(Json::Value env);
  void InitParam(Json::Value request, bool reset);
  // Adds the fields of an upload that come after the call was checked.  Whatever
  // they are named, the request makes the same call as before.
  void AddUploadFields(Json::Value fields);
  void InitAPIInfo(Json::Value info);
  // Forgets which call the request makes; parameters set later name it anew.
  void ClearAPIDesc();
  void InitSession(Json::Value session);

  // Adds the "methods" of the API's description as JSON text, which becomes a
  // value only when somebody asks for it: the runner looks methods up in the
  // text, and values for all of them would cost more than the call itself.
  // `methods` is well-formed JSON.
  void SetDeferredMethods(SharedText methods);

  using APIBase::SetData;
  bool HasData(const std::string& section, const std::string& key) override;
  bool SetData(const std::string& section, const std::string& key, const Json::Value& value,
               bool string_only) override;
  bool ClearData(const std::string& section, const std::string& key) override;
  const Json::Value& GetData(const std::string& section, const std::string& key,
                             const Json::Value& default_value) override;

  // --- Environment ---

  void InitURL();
  // Classifies the browser.
  void InitUA();
  // Classifies and then reads one of the flags.
  bool GetUserAgentFlag(const char* key);

  // --- Parameters ---

  // Opens enciphered parameters in place; false on a failure.
  bool DecryptParam(Json::Value& params);
  bool DecryptAESParam(Json::Value& params);

  template <typename T>
  APIParameter<T> GetAndCheckParam(const std::string& name, bool required, Json::ValueType type,
                                   bool (*validator)(const T&));
  APIParameter<Json::Value> GetAndCheckUnitArrayParam(const std::string& name, bool required,
                                                      bool (*validator)(const Json::Value&));

  // --- Session facts ---

  uid_t GetLoginUID();
  int GetAllowUser();
  std::string GetRemoteIP();
  bool IsUploadRequest();
  bool IsSliceUploadRequest();

  // Conversions of one value of a section, `fallback` when it is absent.
  std::string GetText(const std::string& section, const std::string& key,
                      const std::string& fallback);
  bool GetFlag(const std::string& section, const std::string& key, bool fallback);

  const std::string& api() const { return api_; }
  int version() const { return version_; }
  const std::string& method() const { return method_; }
  int request_method() const { return request_method_; }

 private:
  void InitRequestMethod();
  void InitCookie();
  bool ParseProtocol();
  bool ParseHostAndPort();
  bool ParsePathAndName();

  void TakeParams(Json::Value& request, const char* member);
  // Takes "api", "version" and "method" where `params` has them.
  void SetAPIDesc(const Json::Value& params);
  // Turns the deferred methods into a value if `key` of `section` needs them.
  void MaterialiseMethods(const std::string& section, const std::string& key);

  std::string api_;
  std::int32_t version_ = 0;
  std::string method_;
  std::int32_t request_method_ = APIRequest::METHOD_UNKNOWN;
  APIRequest* owner_;            // not owned
  SharedText deferred_methods_;  // a piece of the description file
};

}  // namespace ORBO
