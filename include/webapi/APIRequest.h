#pragma once

#include <json/value.h>
#include <sys/types.h>

#include <memory>
#include <string>

#include <webapi/APIParameter.h>
#include <webapi/Export.h>

namespace ORBO {

class APIRequestPrivate;

// One request: which API, version and method is called, its parameters, the CGI
// environment, the cookies, the description of the called API and the facts of
// the caller's login session.  The runner fills it and every handler reads it.
//
// Accessors never fail: what is absent yields the caller's default, and session
// facts default to the closed side (timed out, not authorized, no
// administrator).  Not thread-safe; a process serves one request.
class WEBAPI_EXPORT APIRequest {
 public:
  // Same values and meaning as ORBO::PARAM_NECESSITY.
  enum PARAM_NECESSITY : int {
    PARAM_REQUIRED = 0,
    PARAM_OPTIONAL = 1,
  };

  // The values of GetRequestMethod.
  enum REQUEST_METHOD {
    METHOD_UNKNOWN = 0,
    METHOD_GET = 1,
    METHOD_POST = 2,
    METHOD_HEAD = 3,
  };

  // Builds a request from its JSON description, an object with any of these
  // members, loaded in this order: "environ" (InitEnv), "getParam" and
  // "postParam" (InitParam), "reqLib" (InitAPIInfo), "session" (InitSession).
  // Anything else, null included, gives a request without data.
  explicit APIRequest(const Json::Value& request);
  virtual ~APIRequest();

  // Not copyable: responses and handlers hold pointers to the one request.
  APIRequest(const APIRequest&) = delete;
  APIRequest& operator=(const APIRequest&) = delete;

  // --- Loading; each may be called again ---

  // Merges the CGI variables of `env` (members that are no strings are
  // dropped), then derives the cookies and the request method from them.
  void InitEnv(const Json::Value& env);

  // Merges the members "getParam" and then "postParam" of `request` into the
  // parameters, so that POST wins, and takes "api", "version" and "method" from
  // each.  Enciphered parameters are opened first; what cannot be opened is
  // missing afterwards.  With `reset` the old parameters are dropped first.
  void InitParam(const Json::Value& request, bool reset);

  // Replaces the description of the called API.
  void InitAPIInfo(const Json::Value& info);

  // Replaces the session facts.
  void InitSession(const Json::Value& session);

  // --- CGI environment of this request (RFC 3875) ---

  bool HasEnv(const std::string& name);
  // The variable as a JSON string, or `fallback`.  An empty name gives all
  // variables as an object.
  Json::Value GetEnv(const std::string& name, const Json::Value& fallback);

  // --- Parameters ---

  bool HasParam(const std::string& name);
  // The parameter, or `fallback`.  An empty name gives all parameters as an
  // object.
  Json::Value GetParam(const std::string& name, const Json::Value& fallback);
  // The parameter, or `fallback` itself when the request has none.  The result
  // stays valid while the request lives and the parameter is not set again.
  const Json::Value& GetParamRef(const std::string& name, const Json::Value& fallback);

  // Typed parameters; see APIParameter for the flags.  A required parameter
  // that is missing is invalid; an optional one is not set.
  APIParameter<int> GetAndCheckInt(const std::string& name, PARAM_NECESSITY necessity,
                                   bool (*validator)(const int&) = nullptr);
  APIParameter<bool> GetAndCheckBool(const std::string& name, PARAM_NECESSITY necessity,
                                     bool (*validator)(const bool&) = nullptr);
  // Accepts every JSON number, and true and false as 1.0 and 0.0.
  APIParameter<double> GetAndCheckReal(const std::string& name, PARAM_NECESSITY necessity,
                                       bool (*validator)(const double&) = nullptr);
  APIParameter<std::string> GetAndCheckString(const std::string& name, PARAM_NECESSITY necessity,
                                              bool (*validator)(const std::string&) = nullptr);
  APIParameter<Json::Value> GetAndCheckObject(const std::string& name, PARAM_NECESSITY necessity,
                                              bool (*validator)(const Json::Value&) = nullptr);
  APIParameter<Json::Value> GetAndCheckArray(const std::string& name, PARAM_NECESSITY necessity,
                                             bool (*validator)(const Json::Value&) = nullptr);
  // Exists for long long, unsigned int and unsigned long long.
  template <typename T>
  APIParameter<T> GetAndCheckIntegral(const std::string& name, PARAM_NECESSITY necessity,
                                      bool (*validator)(const T&) = nullptr);
  // An array; a single value counts as the array that holds it.  The validator
  // sees the array.
  APIParameter<Json::Value> GetAndCheckUnitArray(const std::string& name, PARAM_NECESSITY necessity,
                                                 bool (*validator)(const Json::Value&) = nullptr);

  // --- Cookies ---

  bool HasCookie(const std::string& name);
  // The decoded value, or `fallback`.
  std::string GetCookie(const std::string& name, const std::string& fallback);
  // Changes this request's view of a cookie; sends nothing.  False for an empty
  // name.
  bool SetCookie(const std::string& name, const std::string& value);
  // The cookie "id"; "" when there is none.
  std::string GetSessionID();

  // --- Attributes: free values of any type, set by the runner or by handlers ---

  bool HasAttr(const std::string& name);
  Json::Value GetAttr(const std::string& name, const Json::Value& fallback);
  // An empty name is ignored.
  void SetAttr(const std::string& name, const Json::Value& value);

  // --- The called API ---

  // A member of the API's description ("lib", "priority", "authLevel", ...), or
  // `fallback`.  An empty name gives the whole description.
  Json::Value GetAPIInfo(const std::string& name, const Json::Value& fallback);
  // "", 0 and "" before parameters are loaded.
  std::string GetAPIClass();
  int GetAPIVersion();
  std::string GetAPIMethod();
  // METHOD_UNKNOWN unless REQUEST_METHOD is exactly "GET", "POST" or "HEAD".
  int GetRequestMethod();

  // --- The URL by which the request came (RFC 3986) ---

  // "https" for a secure request, else what precedes the first ":" of SCRIPT_URI;
  // "" when the server sets none.  Always derived, so never `fallback`.
  std::string GetURLProto(const std::string& fallback);
  // Host name or address, an IPv6 literal with its brackets.
  std::string GetURLHost(const std::string& fallback);
  // `fallback` without a usable Host header; 0 when the port is no number.
  int GetURLPort(int fallback);
  // The two are never derived: always `fallback`.
  std::string GetURLPath(const std::string& fallback);
  std::string GetURLName(const std::string& fallback);

  // --- The client's browser ---
  //
  // Always false: what a browser is found to be is not kept.  The operations
  // stand for handlers that call them; one that treats browsers differently
  // reads GetEnv("HTTP_USER_AGENT"), which a client sets as it likes.

  bool IsMobile();
  bool IsIPhone();  // also an iPad or iPod
  bool IsAndroid();
  bool IsIEMobile();
  bool IsIPad();
  bool IsPlayBook();
  bool IsBlackBerry6();
  bool IsWebKit();
  bool IsSupportWebApp();

  // --- Login session ---

  // (uid_t)-1 when nobody is logged in or the user is unknown.
  uid_t GetLoginUID();
  // "" when nobody is logged in.  A domain user's name holds a backslash, a
  // directory user's an "@".
  std::string GetLoginUserName();
  bool IsAdmin();
  bool IsSkipCheckIP();  // true without session facts
  bool IsTimeout();      // true without session facts
  // The session's time-out in minutes; 0 when unknown.
  int GetTimeoutDuration();
  bool IsAuthorized();
  // The application that the session was opened for; "" for none.
  std::string GetApplication();
  // The text of the session's option for web APIs; "" for none.
  std::string GetWebAPIPriv();
  // True when the application privilege that the permission check found is
  // exactly `app`; also for the empty `app` when it found none.
  bool HasAppPriv(const std::string& app);
  // The path of the session's file; "" for a call without a session.
  std::string GetSessionFilePath();
  // A three-letter language code; "enu" by default.
  std::string GetUILanguage();
  // The user classes that may call the API, as a mask: "admin.local" 0x01,
  // "admin.domain" 0x02, "admin.ldap" 0x04, "normal.local" 0x08,
  // "normal.domain" 0x10, "normal.ldap" 0x20; 0 when the description names
  // none.
  int GetAllowUser();
  // The value of the process environment's "orboAccessToken", or null.  Valid
  // until that variable changes.
  const char* GetOrboAccessTokenID();

  // --- Other facts ---

  // The caller's address as text; "" when unknown.
  std::string GetRemoteIP();
  // Directories for preferences of the login user and of a group; "/tmp" when
  // there is none.
  std::string GetPreferenceDir();
  std::string GetGroupPreferenceDir(const std::string& group);
  bool IsDemoMode();  // always false
  // Whether this request belongs to a background task, and the task's full id
  // (owner, "/", short id); "" for none.
  bool IsPollingTask();
  std::string GetPollingTaskId();
  // A multipart/form-data request (RFC 7578) or a sliced upload.
  bool IsUploadRequest();
  bool IsSliceUploadRequest();

 private:
  friend class APIRunner;  // hands descriptions and parameters over without copying them
  friend class WebEntry;

  std::unique_ptr<APIRequestPrivate> private_;
};

extern template APIParameter<long long> APIRequest::GetAndCheckIntegral<long long>(
    const std::string&, PARAM_NECESSITY, bool (*)(const long long&));
extern template APIParameter<unsigned int> APIRequest::GetAndCheckIntegral<unsigned int>(
    const std::string&, PARAM_NECESSITY, bool (*)(const unsigned int&));
extern template APIParameter<unsigned long long>
APIRequest::GetAndCheckIntegral<unsigned long long>(const std::string&, PARAM_NECESSITY,
                                                    bool (*)(const unsigned long long&));

}  // namespace ORBO
