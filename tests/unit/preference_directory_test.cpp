#include <grp.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/cgi.h"
#include "platform/users.h"
#include "unit/WebAPIDirectory.h"

namespace ORBO {
namespace {

namespace fs = std::filesystem;

class PreferenceDirectory : public testing::Test {
 protected:
  void SetUp() override {
    const passwd* const user = getpwuid(geteuid());
    ASSERT_NE(nullptr, user);
    user_ = user->pw_name;
    base_ = std::string(std::getenv("WEBAPI_ROOT")) + "/var/lib/orbo";
    own_ = base_ + "/users/" + std::to_string(geteuid());
    expected_ = own_ + "/preference";
  }

  // The directory of this process's user, or "" on failure.
  std::string Get() const {
    char buffer[1024] = "";
    return ORBOUserPreferenceDirGet(user_.c_str(), buffer, sizeof buffer) < 0 ? "" : buffer;
  }

  WebAPIDirectory directory_;
  std::string user_;
  std::string base_;
  std::string own_;
  std::string expected_;
};

TEST_F(PreferenceDirectory, IsCreatedPrivateAndFoundAgain) {
  EXPECT_EQ(expected_, Get());
  EXPECT_EQ(fs::perms::owner_all, fs::status(expected_).permissions());
  EXPECT_EQ(fs::perms(0755), fs::status(base_).permissions());
  EXPECT_EQ(expected_, Get());

  char buffer[1024];
  const group* const own_group = getgrgid(getegid());
  ASSERT_NE(nullptr, own_group);
  EXPECT_EQ(0, ORBOGroupPreferenceDirGet(own_group->gr_name, buffer, sizeof buffer));
  EXPECT_EQ(base_ + "/groups/" + std::to_string(getegid()) + "/preference", buffer);
}

TEST_F(PreferenceDirectory, IsRefusedWhereOthersMayHaveSetIt) {
  const auto link = [this](const std::string& path) {
    fs::create_directories(fs::path(path).parent_path());
    fs::create_directory(base_ + "/elsewhere");
    fs::create_directory_symlink(base_ + "/elsewhere", path);
  };
  const auto open = [](const std::string& path) {
    fs::create_directories(path);
    fs::permissions(path, fs::perms::all);
  };
  const auto file = [](const std::string& path) {
    fs::create_directories(fs::path(path).parent_path());
    ASSERT_EQ(0, mknod(path.c_str(), S_IFREG | 0600, 0));
  };
  for (const std::string& path : {base_ + "/users", own_, expected_}) {
    SCOPED_TRACE(path);
    link(path);
    EXPECT_EQ("", Get());
    fs::remove_all(base_);
    open(path);
    EXPECT_EQ("", Get());
    fs::remove_all(base_);
    file(path);
    EXPECT_EQ("", Get());
    fs::remove_all(base_);
  }
  EXPECT_EQ(expected_, Get());
}

TEST_F(PreferenceDirectory, NeedsAKnownNameAndRoom) {
  char buffer[1024];
  for (const char* name : {"", "no such user", "../"}) {
    SCOPED_TRACE(name);
    EXPECT_GT(0, ORBOUserPreferenceDirGet(name, buffer, sizeof buffer));
    EXPECT_GT(0, ORBOGroupPreferenceDirGet(name, buffer, sizeof buffer));
    EXPECT_EQ(static_cast<uid_t>(-1), OrboCgiUIDGet("", name));
  }
  EXPECT_EQ(geteuid(), OrboCgiUIDGet("", user_.c_str()));
  const int length = static_cast<int>(expected_.size());
  EXPECT_GT(0, ORBOUserPreferenceDirGet(user_.c_str(), buffer, length));
  EXPECT_EQ(0, ORBOUserPreferenceDirGet(user_.c_str(), buffer, length + 1));
}

}  // namespace
}  // namespace ORBO
