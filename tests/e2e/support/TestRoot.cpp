#include "support/TestRoot.h"

#include <pwd.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>

namespace e2e {

namespace fs = std::filesystem;

TestRoot::TestRoot() {
  std::string name = (fs::temp_directory_path() / "webapi-e2e-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) {
    throw std::runtime_error("cannot make " + name);
  }
  path_ = name;
  const fs::path web_api = WebAPIDirectory();
  fs::create_directories(web_api);
  fs::create_directories(RunDirectory());
  for (const char* stage : {E2E_STAGES}) {
    fs::copy(stage, web_api, fs::copy_options::recursive);
  }
  fs::copy_file(web_api / "handlers/outside.lib", web_api.parent_path() / "outside.lib");
  HandOver();
}

TestRoot::~TestRoot() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

void TestRoot::HandOver() const {
  const passwd* user = getpwnam(kServiceUser);
  if (geteuid() != 0 || user == nullptr) {
    return;
  }
  auto give = [user](const fs::path& path) {
    if (lchown(path.c_str(), user->pw_uid, user->pw_gid) != 0) {
      throw std::runtime_error("cannot hand over " + path.string());
    }
  };
  give(path_);
  for (const auto& entry : fs::recursive_directory_iterator(path_)) {
    give(entry.path());
  }
}

}  // namespace e2e
