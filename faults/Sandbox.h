#pragma once

#include <string>
#include <vector>

#include "Target.h"

namespace faults {

// One canonical request, as a web server hands it to the CGI program.
struct Request {
  std::string name;
  std::vector<std::string> environment;  // NAME=VALUE, beside what all requests have
  std::string body;
};

// A root directory of its own with the example program, all handlers and a session of
// an administrator.  Removed with the object.
class Sandbox {
 public:
  // `stage` is the staged example directory, `command` the program webapi.  Throws
  // std::exception if the directory cannot be laid out.
  Sandbox(const std::string& stage, const std::string& command);
  ~Sandbox();
  Sandbox(const Sandbox&) = delete;
  Sandbox& operator=(const Sandbox&) = delete;

  std::string Path(const std::string& path) const { return root_ + path; }
  std::string Program() const { return Path("/usr/orbo/orboman/webapi/entry.cgi"); }

  Request Plain() const;
  Request Authenticated() const;
  Request Compound() const;
  Request TaskStart() const;
  Request Upload() const;
  Request Download() const;
  Request Login() const;
  Request Counted() const;
  // To another server, which answers at once.
  Request Relayed() const;
  Request RelayedUpload() const;

  // Forgets tasks, shared files, logins and other sessions, so that a run finds what the one before
  // found.
  void Clear() const;
  // What is wrong with the stored state: a file that is neither as before nor whole, an
  // upload that nobody will ever use, or one that the other server should have and has
  // not.  Empty if nothing is.
  std::string FindFault(bool uploads_are_removed) const;

 private:
  std::string root_;
  std::string session_;
  Target target_;
};

}  // namespace faults
