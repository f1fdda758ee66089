#pragma once

#include <json/value.h>

#include <memory>
#include <string>

#include <webapi/APICookie.h>
#include <webapi/Export.h>
#include <webapi/HTTPStatus.h>

namespace ORBO {

class APIRequest;
class APIResponsePrivate;

// What a handler fills: success with data, or an error code, and on the HTTP
// side headers, cookies, status and functions to run after the output.
//
// The JSON body is {"success": true, "data": ...} or
// {"success": false, "error": {"code": N, "errors": ...}}; "data" and "errors"
// are left out when null.  Not thread-safe.
class WEBAPI_EXPORT APIResponse {
 public:
  // `request` is the request being answered; not owned, may be null, must
  // outlive the response.
  explicit APIResponse(APIRequest* request);
  ~APIResponse();

  // Not copyable: callbacks and redirects are bound to the one response.
  APIResponse(const APIResponse&) = delete;
  APIResponse& operator=(const APIResponse&) = delete;

  // --- Result; each call replaces the whole body ---

  // Success; a null `data` gives exactly {"success": true}.
  void SetSuccess(const Json::Value& data = Json::Value());
  // Failure with `code`; a code of 0 is success with `errors` as its data.
  void SetError(int code, const Json::Value& errors = Json::Value());
  // The last code set; 0 for success and before any result.
  int GetError();
  // The body; an empty object before any result.
  Json::Value GetBody();

  // --- Headers ---

  // Sets a response header, replacing an earlier value; false if `name` is
  // empty.  Names are told apart by case: the type of the answer is "Content-type".  A name or
  // value that holds CR, LF or NUL is left out of the output.
  bool SetHeader(const std::string& name, const std::string& value);
  bool HasHeader(const std::string& name);
  std::string GetHeader(const std::string& name, const std::string& fallback);
  Json::Value GetHeaders();

  // --- Status, redirect, cookies ---

  // Sets the HTTP status; `message` is kept beside it and not sent.
  bool SetStatus(_tag_HTTP_STATUS_CODE code, const std::string& message = std::string());
  // The status set, 200 by default.
  int GetStatus();
  // Redirects (302) to `path` on the host by which the request came; a missing
  // leading "/" is added.  False without a request.  Throws std::out_of_range
  // for an empty path; the runner answers such a call with the error for
  // "no result".
  bool Redirect(const std::string& path);
  // Adds a session cookie (RFC 6265).  Note the order: the path comes first.
  // False, and nothing added, if an argument is empty or `name` holds anything
  // but letters, digits, "_" and "-".  The value is percent-encoded.
  bool AddCookie(const std::string& path, const std::string& name, const std::string& value);
  // Adds a cookie with attributes.  False, and nothing added, in the same cases, for
  // a path or domain with ";" or a control character, and for one that other sites
  // may use and that is not secure.  A cookie is deleted by the same name, path and
  // domain, any value that is not empty, and a negative time.
  bool AddCookie(const APICookie& cookie);
  // The cookies added, as an array of strings.
  Json::Value GetCookies();

  // --- Output options ---

  // Output is enabled by default.  A handler that has written the whole HTTP
  // answer itself switches it off.
  void SetEnableOutput(bool enable);
  bool IsEnableOutput();
  // Asks for a restart of the web server after the answer.
  void SetHttpdRestart(bool restart);
  bool GetHttpdRestart();

  // --- Server error: a short word sent as the header "x-request-error" ---

  void SetServerError(const std::string& word);
  std::string GetServerError();  // "" when none is set
  bool HasServerError();

  // --- After the answer ---

  // Runs `function(argument)` after the answer has been sent, in a process of
  // its own without the web server's streams, in the order of registration.
  // The same pair is kept once; a null function is ignored.  `argument` is not
  // owned.
  void SetCallbackFunc(void (*function)(void*), void* argument);
  // The callback list, opaque; owned by the response.
  void* GetCallbackFuncs();
  // Adds every callback of `list`, another response's GetCallbackFuncs; null
  // does nothing.
  void SetCallbackFuncs(void* list);

 private:
  friend class APIRunner;  // read the body without copying it
  friend class WebEntry;

  std::unique_ptr<APIResponsePrivate> private_;
};

}  // namespace ORBO
