#pragma once

#include <sys/types.h>

#include <string>

namespace ORBO {

struct Session;

// The temporary directory in which the calls of a test run, laid out like a system that
// has just been installed.  Operations return false, with `errno` set, on failure.
class SystemTree {
 public:
  SystemTree();
  ~SystemTree();

  SystemTree(const SystemTree&) = delete;
  SystemTree& operator=(const SystemTree&) = delete;

  // Whether it could be laid out; `errno` tells why not right after construction.
  bool IsReady() const { return ready_; }

  // What WEBAPI_ROOT names.
  std::string Root() const { return base_ + "/root"; }
  std::string WebAPIDirectory() const;
  // A file of the test's own, outside of the system.
  std::string CallFile(const std::string& name) const { return base_ + "/" + name; }

  // Puts a handler library or a description where the system looks for it.  EINVAL for
  // anything else.
  bool Install(const std::string& file);
  // Makes `text` the content of the system's file `path`, and the directories above it.
  bool Write(const std::string& path, const std::string& text);
  // Adds to the end of a file.
  bool Append(const std::string& path, const std::string& text);
  // Opens a session that was last active `idle` minutes ago.
  bool OpenSession(const Session& session, int idle, std::string& id);

  // Deletes everything, as the destructor does in the process that made the tree.
  void Remove();

 private:
  bool LayOut();
  bool WriteTo(const std::string& path, const std::string& text, int flags);

  pid_t owner_;
  std::string base_;
  bool ready_;
};

}  // namespace ORBO
