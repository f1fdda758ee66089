// Files and directories that others may have tampered with.

#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/users.h"
#include "unit/WebAPIDirectory.h"
#include "util/read_file.h"

namespace ORBO {
namespace {

namespace fs = std::filesystem;

TEST(ReadFile, ReadsRegularFilesOnly) {
  const WebAPIDirectory directory;
  const std::string text = std::string("a\0b\n", 4) + std::string(100000, 'x');
  directory.Write("full", text);
  ASSERT_EQ(0, mkfifo("pipe", 0600));
  std::string out;
  EXPECT_TRUE(ReadWholeFile("full", out));
  EXPECT_EQ(text, out);
  const std::pair<const char*, int> refused[] = {
      {"missing", ENOENT}, {".", EISDIR}, {"pipe", EINVAL}, {"/dev/null", EINVAL}};
  for (const auto& [path, error] : refused) {
    EXPECT_FALSE(ReadWholeFile(path, out));
    EXPECT_EQ(error, errno) << path;
    EXPECT_EQ(text, out);
  }
  // Files of the kernel have no size.
  EXPECT_TRUE(ReadWholeFile("/proc/self/status", out));
  EXPECT_NE(std::string::npos, out.find("\nPid:"));
}

TEST(PreferenceDirectory, IsCreatedPrivateAndRefusedWhereOthersMayHaveSetIt) {
  const WebAPIDirectory directory;
  const passwd* const user = getpwuid(geteuid());
  ASSERT_NE(nullptr, user);
  const std::string name = user->pw_name;
  const std::string base = std::string(std::getenv("WEBAPI_ROOT")) + "/var/lib/orbo";
  const std::string own = base + "/users/" + std::to_string(geteuid());
  const std::string expected = own + "/preference";
  char buffer[1024];
  const auto get = [&](std::size_t size) {
    return ORBOUserPreferenceDirGet(name.c_str(), buffer, static_cast<int>(size));
  };
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(0, get(expected.size() + 1));
    EXPECT_EQ(expected, buffer);
    EXPECT_EQ(fs::perms::owner_all, fs::status(expected).permissions());
  }
  EXPECT_GT(0, get(expected.size()));
  for (const char* unknown : {"", "no such user", "../"}) {
    EXPECT_GT(0, ORBOUserPreferenceDirGet(unknown, buffer, sizeof buffer));
    EXPECT_GT(0, ORBOGroupPreferenceDirGet(unknown, buffer, sizeof buffer));
  }
  for (const fs::path path : {base + "/users", own, expected}) {
    SCOPED_TRACE(path);
    fs::remove_all(path);
    fs::create_directory(base + "/elsewhere");
    fs::create_directory_symlink(base + "/elsewhere", path);
    EXPECT_GT(0, get(sizeof buffer));
    fs::remove(path);
    fs::create_directory(path);
    fs::permissions(path, fs::perms::all);
    EXPECT_GT(0, get(sizeof buffer));
    fs::remove(path);
    ASSERT_EQ(0, mknod(path.c_str(), S_IFREG | 0600, 0));
    EXPECT_GT(0, get(sizeof buffer));
    fs::remove_all(base);
    EXPECT_EQ(0, get(sizeof buffer));
  }
}

}  // namespace
}  // namespace ORBO
