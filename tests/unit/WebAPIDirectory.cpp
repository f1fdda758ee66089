#include "unit/WebAPIDirectory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace ORBO {

WebAPIDirectory::WebAPIDirectory() : previous_directory_(std::filesystem::current_path().string()) {
  std::string root = (std::filesystem::temp_directory_path() / "webapi-unit-XXXXXX").string();
  EXPECT_NE(nullptr, mkdtemp(root.data()));
  root_ = root;
  directory_ = root_ + "/usr/orbo/orboman/webapi/";
  std::filesystem::create_directories(directory_);
  std::filesystem::current_path(directory_);
  setenv("WEBAPI_ROOT", root_.c_str(), 1);
}

WebAPIDirectory::~WebAPIDirectory() {
  unsetenv("WEBAPI_ROOT");
  std::filesystem::current_path(previous_directory_);
  std::filesystem::remove_all(root_);
}

void WebAPIDirectory::Write(const std::string& name, const std::string& text) const {
  std::ofstream(directory_ + name) << text;
}

void WebAPIDirectory::Configure(const std::string& settings) const {
  std::filesystem::create_directories(root_ + "/etc/orbo");
  std::ofstream(root_ + "/etc/orbo/platform.conf") << settings;
}

std::string TestModule(const std::string& name) {
  return std::string(WEBAPI_TEST_MODULE_DIR) + "/" + name + ".so";
}

}  // namespace ORBO
