#pragma once

#include <json/value.h>

#include <memory>
#include <string>

#include <webapi/testing/HandlerAnswer.h>

namespace ORBO {

class HandlerTestPrivate;

// Calls the methods of a handler library as a web server would, without one:
//
//   ORBO::HandlerTest test(WEBAPI_HANDLER_FILES);
//   const ORBO::HandlerAnswer answer =
//       test.User("ada").Param("name", "Ada").Call("ORBO.Demo", 1, "hello");
//   EXPECT_EQ(answer.Data()["text"], "Hello, Ada!");
//
// For any test framework.  A call is served by the library itself, as a request of the
// CGI program: parameters on the wire, the API's description, the user's session and
// rights, the upload, the check table, the handler out of its library, the answer.  Each
// runs in a process of its own, with its own environment and streams, so that nothing
// that a handler does to its process reaches the test.  What it logs appears on the
// standard error output.
//
// The system around it is a temporary directory, which WEBAPI_ROOT names in the call.  It
// has the system's own defaults (lib.def) and nothing else.  The directory, and what calls
// have left running, goes with this object, and with the test's process however that ends.
//
// What cannot be done, such as to read a file that is missing, is the fault of every
// answer from then on.  Operations throw nothing.  One thread uses an object; a process
// may have several objects.
class HandlerTest {
 public:
  // `files` are paths with "|" between them: handler libraries, which get into "handlers"
  // of the web-API directory, and descriptions (*.lib, lib.def).  The CMake function
  // webapi_add_handler_test defines WEBAPI_HANDLER_FILES so.
  explicit HandlerTest(const std::string& files);
  ~HandlerTest();

  // Not copyable: it owns a directory and processes.
  HandlerTest(const HandlerTest&) = delete;
  HandlerTest& operator=(const HandlerTest&) = delete;

  // --- The system; it stays so for later calls ---

  // Logs `name` in: calls are this user's, "" for nobody's.  A backslash in the name makes
  // a domain user, an "@" a directory user.  No account is needed, but then the user has
  // no user id.
  HandlerTest& User(const std::string& name);
  // The same, as an administrator, which the user stays.
  HandlerTest& Administrator(const std::string& name);
  // Gives the user who is logged in the application privilege `name`.
  HandlerTest& Privilege(const std::string& name);
  // Sets a key of platform.conf.
  HandlerTest& Setting(const std::string& key, const std::string& value);
  // Writes a file of the system and makes the directories above it: "/srv/files/a".
  HandlerTest& WriteFile(const std::string& path, const std::string& content);
  // The content of a file of the system; "" for none.
  std::string ReadFile(const std::string& path) const;
  // Where a path of the system really is.
  std::string Path(const std::string& path) const;
  // How long a call may take; 30 seconds by default.
  HandlerTest& TimeLimit(int seconds);

  // --- The next call ---

  HandlerTest& Param(const std::string& name, const Json::Value& value);
  // A file of a form.  The call becomes an upload (POST, multipart/form-data), in which
  // parameters are fields and reach the handler as text.
  HandlerTest& File(const std::string& field, const std::string& name, const std::string& content);
  // "GET" by default, "POST" with files.
  HandlerTest& HttpMethod(const std::string& name);
  HandlerTest& Header(const std::string& name, const std::string& value);
  HandlerTest& Cookie(const std::string& name, const std::string& value);
  // Sets a CGI variable (RFC 3875, section 4.1): "REMOTE_ADDR".
  HandlerTest& Variable(const std::string& name, const std::string& value);
  // Makes the permission check and ignores its failure, as with "authLevel" 2.
  HandlerTest& SkipPermission();
  // All of this from one JSON object, with any of the members
  //   "params": {name: value}, "files": [{"field", "name", "content"}], "httpMethod",
  //   "headers", "cookies" and "variables": {name: text}, "skipPermission": true,
  //   "session": {"user", "administrator", "privileges": [name], "address",
  //     "application", "language", "timeout": minutes, "idle": minutes}
  HandlerTest& Request(const std::string& json);

  // Serves the call.  Everything about it is forgotten afterwards, but for the session.
  HandlerAnswer Call(const std::string& api, int version, const std::string& method);

  // Waits until everything that calls have left running (callbacks, background tasks) has
  // ended; false after `seconds`.
  bool WaitForEnd(int seconds);

 private:
  std::unique_ptr<HandlerTestPrivate> private_;
};

}  // namespace ORBO
