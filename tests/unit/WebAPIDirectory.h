#pragma once

#include <string>

namespace ORBO {

// A web-API directory of its own below a root of its own: WEBAPI_ROOT points
// there and the process works in it while this object lives.
class WebAPIDirectory {
 public:
  WebAPIDirectory();
  ~WebAPIDirectory();

  WebAPIDirectory(const WebAPIDirectory&) = delete;
  WebAPIDirectory& operator=(const WebAPIDirectory&) = delete;

  // Writes a file of the directory.
  void Write(const std::string& name, const std::string& text) const;
  // Writes the platform's settings below the root.
  void Configure(const std::string& settings) const;

 private:
  std::string root_;
  std::string directory_;
  std::string previous_directory_;
};

// The path of the test module `name`.
std::string TestModule(const std::string& name);

}  // namespace ORBO
