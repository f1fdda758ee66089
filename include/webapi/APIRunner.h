#pragma once

#include <json/value.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <type_traits>

#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>
#include <webapi/APITable.h>
#include <webapi/Export.h>

namespace ORBO {

class APIRunnerPrivate;
class DescriptionCache;
class DescriptionDefaults;

// The missing virtual destructor is part of the binary interface.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

// The dispatcher.  One runner serves one request: it owns the request and the
// response, finds the API's description, checks the request against it, opens
// the handler library, calls the handler, and undoes every process-wide change
// that it made for the call.
//
// The base class checks no permission and writes nothing; it serves calls
// inside a process.  WebEntry adds the CGI side.
//
// Descriptions are looked up relative to the current directory, which must be
// the web-API directory.  Construct, Run once, read GetResponse, destroy.  Not
// thread-safe: working directory, environment, streams and process name belong
// to the whole process.
//
// The order of the virtual operations is part of the binary interface, and
// there is no virtual destructor: destroy a runner through its own type.
class WEBAPI_EXPORT APIRunner {
 public:
  // Makes the process a session leader (setsid(2)) where it can, and reads the
  // defaults file "lib.def" of the web-API directory; a missing or unreadable
  // one counts as empty.
  APIRunner();
  // Closes the handler libraries and restores the process's name.
  ~APIRunner();

  // Not copyable: it owns open libraries and the process's identity.
  APIRunner(const APIRunner&) = delete;
  APIRunner& operator=(const APIRunner&) = delete;

  // Serves one request described by `options`, an object with any of
  // "getParam", "postParam", "environ", "session" and "attr".  The result is
  // read with GetResponse.  Throws nothing.
  virtual void Run(const Json::Value& options);

  // Calls an API in this process as `user`, without the web server and without a
  // permission check: the caller answers for that.  `params` are the parameters, an
  // object or null; `attr`, an object or null, gives request attributes.  `result`
  // becomes the response body with the member "httpd_restart", or an error body:
  // 101 when `api`, `method` or `user` is null, 102 also when the web-API directory
  // cannot be entered.  Throws nothing.
  //
  // During the call the process works in the web-API directory, its log identity
  // names the call, and the environment variables USERNAME and
  // ORBO_WEBAPI_USERNAME hold `user`.  Afterwards all is as before, with one
  // exception: USERNAME takes the earlier value of ORBO_WEBAPI_USERNAME, and where
  // that was unset both keep `user`.  The call inherits the process environment, so
  // that within an upload request only methods with "allowUpload" can be called.
  static void Exec(Json::Value& result, const char* api, int version, const char* method,
                   const Json::Value& params, const Json::Value& attr, const char* user);
  // The same without attributes.
  static void Exec(Json::Value& result, const char* api, int version, const char* method,
                   const Json::Value& params, const char* user);

  // Fills the request from the process environment and `options`.  False with
  // error 101 if `options` is empty.
  virtual bool Initialize(const Json::Value& options);

  // Whether the request must pass CheckPermission.  The base says no.
  virtual bool NeedPermission(APIRequest* request);
  // True when the caller may make this call.  An override that refuses has set
  // the error on the response.  The base says yes.
  virtual bool CheckPermission(APIRequest* request, APIResponse* response);
  // Prepares an upload request; an override that fails has set the error.
  virtual bool HandleUpload(APIRequest* request, APIResponse* response);
  // Asked after a failed CheckPermission: true lets the call go on anyway.  The
  // base says yes.
  virtual bool SkipPermission(APIRequest* request);

  // The response body with the member "httpd_restart" added.
  Json::Value GetResponse();

  // Hands over the arguments of main, so that the process can show in its
  // command line which API it runs.  The first argument's memory is overwritten
  // from here on and must stay valid while the runner lives.
  void SetArgs(int argc, char** argv);

  // --- Descriptions ---

  // Loads every "*.lib" file of the current directory into `descs`, in name
  // order; files that cannot be read add nothing.  False if there is none.
  bool InitLibDesc(Json::Value& descs);
  // Loads the file that describes `api` into `descs`, unless `descs` has `api`
  // already.  False for an empty name; false, and logged, if there is no such file
  // or it is no JSON object.  True does not mean that `api` itself is described.
  bool InitLibDesc(Json::Value& descs, const std::string& api);
  // The same for the request's API; false for a null request.
  bool InitLibDesc(Json::Value& descs, APIRequest* request);
  // Whether a description entry is usable: "lib" a text that is not empty,
  // "minVersion" and "maxVersion" integers, "methods" an object, "priority", if
  // there, an integer of -10 to 10.
  bool CheckLibDescription(Json::Value& entry);
  // Fills the keys that `entry` lacks from the defaults; returns `entry`.
  Json::Value& ApplyLibDef(Json::Value& entry);
  // The attributes of one method: those of its own, or the defaults' for a
  // method listed by name only or not at all.  Does not check the version
  // range.  Valid while the runner lives.
  const Json::Value& GetMethod(const std::string& api, int version, const std::string& method);
  // One attribute as a truth value; a method that has attributes of its own
  // does not inherit the defaults'.
  bool GetMethodAttr(const std::string& api, int version, const std::string& method,
                     const std::string& attr);
  // The same for the request's method; false for a null request or an empty
  // name.
  bool GetMethodAttr(APIRequest* request, const std::string& attr);
  // Hands the description of the request's API to the request.  False if it has
  // not been loaded.
  bool AddAPIInfo(APIRequest* request);

  // --- Steps of a request ---

  // Copies the process environment into the object `env`.  False with error 101
  // if `env` is not an object.
  bool InitEnv(Json::Value& env);
  // Names the process and its log identity after the request.  False with error
  // 101 without an API name, 118 if the kernel refuses the name.
  bool SetProcessName(APIRequest* request, APIResponse* response);
  // Checks the request against the descriptions.  False with error 101 (name,
  // version or method unusable), 102 (API not described), 104 (version out of
  // range), 103 (method not listed), 115 (upload not allowed) or 116 (not in
  // demo mode).
  bool CheckRequestParam(APIRequest* request, APIResponse* response);
  // Checks and dispatches one request.  True once the call has been made, whatever
  // its result.
  bool Process(APIRequest* request, APIResponse* response);
  // Serves a request through its handler library.
  bool ProcessLib(APIRequest* request, APIResponse* response);
  // Adds one to the usage counter of the request's API, version and method if the
  // system's owner shares usage data ("join_user_data_collect" in
  // "/etc/orboinfo.conf" is "yes" when the process first asks).  A failure changes
  // nothing and is not reported.
  void IncreaseCounter(APIRequest* request);
  // Serves the built-in API "ORBO.Entry.Request".  False with error 110 without a
  // list of calls, or beyond eight lists within each other; false, and no result, for
  // a method other than "request".
  bool ProcessEntry(APIRequest* request, APIResponse* response);
  // Runs the calls in the array parameter "compound" one after another, as the
  // caller of `request`, and answers with all their bodies; what fails or is
  // refused is told there.  With "stop_when_error" the calls after a failed one are
  // left out (112).  Calls with "allowUpload" or "allowDownload" are refused (113).
  // False with error 110 if "compound" is no array, or asks for more than what is left
  // of 1000 calls in one request, those of lists within it included.
  bool HandleCompound(APIRequest* request, APIResponse* response);

  // --- Handler libraries ---

  // Opens (or reuses) the request's handler library and fetches its tables.
  // `check_table` may be null.  True only when the method table was obtained.
  // The tables stay valid until CloseLib.
  bool OpenLib(APIRequest* request, _tag_API_TABLE** table, _tag_API_CHECK_TABLE** check_table);
  bool GetTableFunc(void* handle, _tag_API_TABLE** table);
  // True, and `*check_table` untouched, when the library has none.
  bool GetCheckTableFunc(void* handle, _tag_API_CHECK_TABLE** check_table);
  // Closes every open library.
  void CloseLib();

 private:
  friend class APIRunnerPrivate;
  friend class WebEntry;

  // Runs one call of a compound request; false if it failed or was refused.
  bool ProcessElement(APIRequest* request, APIResponse* response);

  std::unique_ptr<DescriptionDefaults> defaults_;  // of the descriptions
  std::unique_ptr<DescriptionCache> descs_;        // descriptions by API name
  std::unique_ptr<APIRequest> request_;            // the request being served
  std::unique_ptr<APIResponse> response_;          // its response
  std::map<std::string, void*> libs_;              // open handler libraries by path
  std::int32_t compound_depth_ = 0;                // compound requests being handled
  std::int32_t calls_left_ = 1000;                 // how many calls they may still make
  std::unique_ptr<APIRunnerPrivate> private_;      // the process's identity
};

#pragma GCC diagnostic pop

static_assert(!std::has_virtual_destructor_v<APIRunner>,
              "the virtual table of a runner has six operations and nothing else");

}  // namespace ORBO
