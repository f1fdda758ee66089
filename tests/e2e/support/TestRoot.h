#pragma once

#include <string>

namespace e2e {

// The user whom a server started by root hands its work to.
constexpr char kServiceUser[] = "www-data";

// A root directory of its own, with the example program, all handlers and all
// descriptions in its web-API directory, and one description outside of it that
// nobody may reach.  Removed with the object.
class TestRoot {
 public:
  // Throws std::exception if it cannot be laid out.
  TestRoot();
  ~TestRoot();
  TestRoot(const TestRoot&) = delete;
  TestRoot& operator=(const TestRoot&) = delete;

  const std::string& path() const { return path_; }
  std::string WebAPIDirectory() const { return path_ + "/usr/orbo/orboman/webapi"; }
  // For a server's process id, sockets and logs.
  std::string RunDirectory() const { return path_ + "/run"; }

  // Gives everything below the root to the service user, where this process may
  // do so.
  void HandOver() const;

 private:
  std::string path_;
};

}  // namespace e2e
