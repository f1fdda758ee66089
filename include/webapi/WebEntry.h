#pragma once

#include <json/value.h>

#include <memory>
#include <string>

#include <webapi/APIRunner.h>
#include <webapi/Export.h>

struct OrboCgi;

namespace ORBO {

// The missing virtual destructor is part of the binary interface.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

// Serves one HTTP request in a CGI program (RFC 3875):
//
//   int main(int argc, char** argv) {
//     ORBO::WebEntry entry;
//     entry.SetArgs(argc, argv);
//     entry.Run(Json::Value());
//   }
//
// Reads the CGI environment, the query string and the body, checks permission,
// runs the API, and writes headers and JSON to standard output.  The working
// directory must be the web-API directory.  Construct, Run once, destroy.
class WEBAPI_EXPORT WebEntry : public APIRunner {
 public:
  // Ends the process, with error 117 as its answer, when there is not even the memory
  // for an empty request.
  WebEntry();
  // Deletes the temporary files of the request.
  ~WebEntry();

  // --- Virtual operations of APIRunner ---

  // `options` is not used: everything comes from the CGI environment.  The
  // answer is written whatever happens, unless the handler switched the output
  // off.  Throws nothing.
  void Run(const Json::Value& options) override;
  bool Initialize(const Json::Value& options) override;
  // True unless the description's "authLevel" is 0.  What is no integer counts
  // as 1.
  bool NeedPermission(APIRequest* request) override;
  bool CheckPermission(APIRequest* request, APIResponse* response) override;
  // Reads the whole upload into the request's parameters and into files that live as
  // long as this object, unless the method has "deferUpload".  On failure sets error
  // 108 with the code of APIUpload::GetUploadAll.
  bool HandleUpload(APIRequest* request, APIResponse* response) override;
  // True when "authLevel" is 2: the check is made and its failure ignored.
  bool SkipPermission(APIRequest* request) override;

  // The session check alone: an error code, 0 when passed.
  int CheckPermission(bool allow_timeout);

  // --- Parameters ---

  // Fills params["getParam"] from the query string and params["postParam"] from
  // the body.  False with error 101 if either cannot be used.
  bool InitParam(Json::Value& params);
  bool InitGetParam(Json::Value& out);
  // Reads the body from standard input.  False for an upload, a body without
  // length, or one above the platform's limit.
  bool InitPostParam(Json::Value& out);
  // Reads the fields in front of the file part of an upload body.  False if the
  // body cannot be read.
  bool LoadUploadAPIDesc(Json::Value& out);
  // Decodes one parameter line and opens what is enciphered in it.
  bool DetectAndDecryptParamLine(const std::string& line, Json::Value& out);
  // Opens one enciphered text into `out`.
  bool DecryptParam(const std::string& text, Json::Value& out);
  // Opens the AES pair in `params`, if there is one.
  bool DecryptAESParam(Json::Value& params);

  // --- Output ---

  // Writes the header block with its closing empty line.  Headers and cookies
  // that hold CR, LF or NUL are left out and logged.
  void OutputHeader();
  // Writes the JSON body and flushes standard output.
  void OutputBody();
  // Runs the response's callbacks in a detached process.  Returns that
  // process's id, a negative value if it could not be started, 0 when there is
  // nothing to run.
  int HandleCallback(APIResponse* response);

 private:
  // Runs the call; what it throws ends as an error of the response.
  void Serve();
  // OutputHeader and OutputBody, whole or not at all; `is_answered` is set once
  // something may have been written.
  void OutputAnswer(bool& is_answered);
  bool ProcessRelay(APIRequest* request, APIResponse* response);
  // Takes over a session id or an access token that came as a parameter.
  bool InitSessionVariables();
  // Checks session and token; the result of the platform's check.
  int CheckCredentials(bool allow_timeout);

  Json::Value temp_files_;        // paths to delete at the end
  std::unique_ptr<OrboCgi> cgi_;  // the platform's record of this request
  Json::Value perm_info_;         // results of the permission check
};

#pragma GCC diagnostic pop

// Asks the platform to restart the web server; usable as a callback, its
// argument is not used.
WEBAPI_EXPORT void RestartHttpd(void* argument);

}  // namespace ORBO
