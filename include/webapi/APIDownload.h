#pragma once

#include <json/value.h>

#include <cstdio>
#include <memory>
#include <string>

#include <webapi/Export.h>

namespace ORBO {

class APIDownloadPrivate;
class APIResponse;

// Answers a call with a file instead of JSON.  The method's description must set
// "allowDownload".
//
//   void Fetch(APIRequest*, APIResponse* response) {
//     APIDownload download(response);
//     download.SetAttachment("report.pdf");
//     if (download.Output("/volume1/reports/17.pdf") < 0) {
//       response->SetError(1001);  // nothing has been written
//     }
//   }
//
// The answer is 200 with the whole file, 206 or 416 where the client asks for a range of
// bytes, 304 or 412 by its conditions; for HEAD it has no content.  With send-file
// (GetXSendFileEnabled) the web server adds the content and deals with ranges.
//
// Every header of the response is sent, the cookies are not.  Content-Length, ETag,
// Last-Modified, Accept-Ranges, "Cache-Control: private, no-cache" and
// "X-Content-Type-Options: nosniff" are added where the response does not have them.
// Where it has a "Status" the whole file is sent with that status.  Not thread-safe.
class WEBAPI_EXPORT APIDownload {
 public:
  // Results of Output; a negative one is a failure.
  enum Result : int {
    OUTPUT_DONE = 0,        // the answer is written, whatever its status
    OUTPUT_BROKEN_OFF = 1,  // begun, yet not whole: the client is gone, or the file became shorter
  };

  // With a response of its own, whose headers begin with the type of JSON.
  APIDownload();
  // `response` keeps the headers; not owned, must outlive this object.  Without one no
  // header can be set.
  explicit APIDownload(APIResponse* response);
  ~APIDownload();

  // Not copyable: the private part points back to its object.
  APIDownload(const APIDownload&) = delete;
  APIDownload& operator=(const APIDownload&) = delete;

  // --- Headers ---

  // APIResponse::SetHeader; false without a response.
  bool SetHeader(const std::string& name, const std::string& value);
  // Sets each member of the object that is a text, in the order of their names, up to
  // the first that fails (false).
  bool SetHeader(const Json::Value& headers);
  // Makes browsers save the content under `name` instead of showing it
  // (Content-Disposition: RFC 6266, with RFC 8187 for names beyond ASCII).  `name` is
  // UTF-8; what may not stand in a file's name ("/", "\", control characters, malformed
  // bytes) becomes "_".  False, and nothing set, without a response, for "", and for
  // more than 1024 bytes.
  bool SetAttachment(const std::string& name);

  // --- The type of the content: the first of these that is there ---
  //   1. "Content-type" by SetHeader, unless it is the type of JSON answers;
  //   2. what was set here last;
  //   3. by the extension of the path's name, "application/octet-stream" for a stream.
  // Output puts it into the response's "Content-type", from where it is sent, once.

  void SetMimeType(const std::string& type);
  // The type by the extension of `name`.
  void SetMimeTypeFromFileName(const std::string& name);

  // --- Output ---

  // Writes the whole answer to standard output and switches the response's own output
  // off (APIResponse::SetEnableOutput), since nothing may follow.  Do before it what must
  // be done: a web server may end the process (SIGTERM) as soon as it has what it needs,
  // with send-file at once, and when the client hangs up.  A failure (negative) leaves nothing
  // written and the response's headers as they were, so that the handler can still
  // answer an error: -ENOENT, -EACCES and so on as open(2) tells, -EISDIR or -EINVAL for
  // what is no regular file (a path with NUL too), -EPERM where the method's
  // description does not allow downloads.
  int Output(const std::string& path);
  // The same from the position of the open `file` to its end; the position stays.  A
  // pipe or another stream that is no regular file is read to its end, without ranges
  // and conditions.  Never by send-file.
  int Output(std::FILE* file);

  // --- Send-file: the web server is told the path and sends the content itself ---

  // Sends without it from here on, in the whole process.
  void SetXSendFileDisabled();
  // Whether the web server offers it: MOD_X_SENDFILE_ENABLED is "yes", in any case.
  bool GetXSendFileEnabled();

 private:
  std::unique_ptr<APIDownloadPrivate> private_;
};

}  // namespace ORBO
