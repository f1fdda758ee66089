#pragma once

#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>
#include <string>

namespace e2e {

// A root directory of its own, with the example program, all handlers and all
// descriptions in its web-API directory, and one description outside of it that
// nobody may reach.  Removed with the object.
class TestRoot {
 public:
  // Throws std::exception if it cannot be laid out.
  TestRoot() {
    namespace fs = std::filesystem;
    path_ = (fs::temp_directory_path() / "webapi-e2e-XXXXXX").string();
    if (mkdtemp(path_.data()) == nullptr) {
      throw std::runtime_error("cannot make " + path_);
    }
    const fs::path web_api = WebAPIDirectory();
    fs::create_directories(web_api);
    fs::create_directories(RunDirectory());
    for (const char* stage : {E2E_STAGES}) {
      fs::copy(stage, web_api, fs::copy_options::recursive);
    }
    fs::copy_file(web_api / "handlers/outside.lib", web_api.parent_path() / "outside.lib");
    HandOver();
  }
  ~TestRoot() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TestRoot(const TestRoot&) = delete;
  TestRoot& operator=(const TestRoot&) = delete;

  // Gives everything below to the user whom a server started by root hands its
  // work to.
  void HandOver() const {
    if (geteuid() == 0 && std::system(("chown -R www-data: " + path_).c_str()) != 0) {
      throw std::runtime_error("cannot hand over " + path_);
    }
  }

  const std::string& path() const { return path_; }
  std::string WebAPIDirectory() const { return path_ + "/usr/orbo/orboman/webapi"; }
  // For a server's process id, sockets and logs.
  std::string RunDirectory() const { return path_ + "/run"; }

 private:
  std::string path_;
};

}  // namespace e2e
