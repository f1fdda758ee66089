#include "platform/linux/password_check.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>

#include "unit/LogCapture.h"
#include "unit/WebAPIDirectory.h"
#include "util/paths.h"
#include "util/read_file.h"

namespace ORBO {
namespace {

namespace fs = std::filesystem;

constexpr char kAddress[] = "192.0.2.1";
constexpr char kPassword[] = "correct horse";

std::string PasswordFile() { return RootedPath("/etc/orbo/passwords"); }

PasswordResult Check(const std::string& user, const std::string& password) {
  return CheckPassword(user, password, kAddress);
}

double SecondsOfWork(const std::string& user) {
  const std::clock_t begin = std::clock();
  Check(user, "wrong");
  return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

class PasswordCheck : public ::testing::Test {
 protected:
  PasswordCheck() { fs::create_directories(RootedPath("/etc/pam.d")); }

  static void Write(const std::string& path, const std::string& text, mode_t mode) {
    const std::string rooted = RootedPath(path);
    fs::create_directories(fs::path(rooted).parent_path());
    std::ofstream(rooted) << text;
    chmod(rooted.c_str(), mode);
  }

 private:
  WebAPIDirectory root_;
};

TEST(UserName, HasAForm) {
  const std::string longest(256, 'x');
  for (const std::string& name : {std::string("DOMAIN\\ann"), std::string("ann@example.com"),
                                  "\xC3\xA9milie " + longest.substr(9)}) {
    EXPECT_TRUE(IsUserName(name)) << name;
  }
  for (const char* name :
       {"", "a:b", "../ann", "ann\n", "ann\x7f", " ann", "ann ", "#ann", "\xC3("}) {
    EXPECT_FALSE(IsUserName(name)) << name;
  }
  EXPECT_FALSE(IsUserName(longest + "x") || IsUserName(std::string("ann\0", 4)));
}

TEST_F(PasswordCheck, FileAcceptsTheRightPasswordAlone) {
  ASSERT_TRUE(SetFilePassword("ann", kPassword));
  EXPECT_EQ(PasswordResult::kAccepted, Check("ann", kPassword));
  EXPECT_EQ(PasswordResult::kRefused, Check("ann:x", kPassword)) << "user with hash";
  const std::string right = kPassword;
  for (const std::string& wrong :
       {right + "x", right + std::string("\0x", 2), std::string(), std::string(600, 'x')}) {
    EXPECT_EQ(PasswordResult::kRefused, Check("ann", wrong)) << wrong;
  }
}

TEST_F(PasswordCheck, FileIsReplacedWholeAndPrivate) {
  Write("/etc/orbo/passwords", "# people\nann:*:x\nbob:!\nann:$y$old", 0640);
  ASSERT_TRUE(SetFilePassword("ann", kPassword));
  std::string text;
  EXPECT_TRUE(ReadWholeFile(PasswordFile(), text));
  EXPECT_EQ(0U, text.find("# people\nbob:!\nann:$y$j9T$")) << text;
  EXPECT_EQ(std::string::npos, text.find(kPassword));
  struct stat status {};
  ASSERT_EQ(0, stat(PasswordFile().c_str(), &status));
  EXPECT_EQ(0640U, status.st_mode & 07777U);

  ASSERT_TRUE(SetFilePassword("ann", ""));
  EXPECT_TRUE(ReadWholeFile(PasswordFile(), text));
  EXPECT_EQ("# people\nbob:!\n", text);
  EXPECT_FALSE(SetFilePassword("ann", ""));
  EXPECT_EQ(ENOENT, errno);
  EXPECT_FALSE(SetFilePassword("a:b", kPassword));
  EXPECT_EQ(EINVAL, errno);
  EXPECT_FALSE(fs::exists(PasswordFile() + ".new"));
}

TEST_F(PasswordCheck, HashesThatAreNoneMatchNothing) {
  // The last one is an MD5 hash of the password.
  Write("/etc/orbo/passwords",
        "a:\nb:*\nc:!\nd:correct horse\ne:$1$saltsalt$NuzA7WTAelpl95xgBGWN60\n", 0600);
  for (const char* user : {"a", "b", "c", "d", "e"}) {
    SCOPED_TRACE(user);
    for (const char* password : {kPassword, "*", "!", "*0", ""}) {
      EXPECT_EQ(PasswordResult::kRefused, Check(user, password)) << password;
    }
  }
}

TEST_F(PasswordCheck, UnknownUserTakesAsLong) {
  ASSERT_TRUE(SetFilePassword("ann", kPassword));
  const double wrong = SecondsOfWork("ann");
  EXPECT_GT(SecondsOfWork("eve"), wrong / 3);
  Write("/etc/orbo/passwords", "# nobody\n", 0600);
  EXPECT_GT(SecondsOfWork("eve"), wrong / 3);
}

TEST_F(PasswordCheck, FileWithWrongRightsIsNotUsed) {
  const LogCapture log;
  EXPECT_EQ(PasswordResult::kUnavailable, Check("ann", kPassword)) << "missing";
  ASSERT_TRUE(SetFilePassword("ann", kPassword));
  for (const mode_t mode : {0644, 0620, 0602}) {
    SCOPED_TRACE(mode);
    ASSERT_EQ(0, chmod(PasswordFile().c_str(), mode));
    EXPECT_EQ(PasswordResult::kUnavailable, Check("ann", kPassword));
    EXPECT_FALSE(SetFilePassword("ann", "other"));
  }
  ASSERT_EQ(0, chmod(PasswordFile().c_str(), 0600));
  if (geteuid() == 0) {
    ASSERT_EQ(0, chown(PasswordFile().c_str(), 12345, 0));
    EXPECT_EQ(PasswordResult::kUnavailable, Check("ann", kPassword)) << "another user's";
    ASSERT_EQ(0, chown(PasswordFile().c_str(), 0, 0));
  }
  fs::rename(PasswordFile(), PasswordFile() + ".real");
  fs::create_symlink("passwords.real", PasswordFile());
  EXPECT_EQ(PasswordResult::kUnavailable, Check("ann", kPassword)) << "link";
  EXPECT_TRUE(log.Has("cannot use the password file"));
}

// The services' modules on a 64-bit machine are those of 64-bit programs.
#if __SIZEOF_POINTER__ == 8
TEST_F(PasswordCheck, ServiceDecides) {
  Write("/etc/orbo/platform.conf", "auth=pam\n", 0644);
  Write("/etc/pam.d/webapi", "auth required pam_permit.so\naccount required pam_permit.so\n", 0644);
  // The program gets the password, ended by NUL, and the facts as variables.
  Write("/bin/check",
        "#!/bin/sh\n[ \"$PAM_USER $PAM_RHOST\" = \"ann 192.0.2.1\" ] && grep -qxz right\n", 0755);
  const std::string ask =
      "auth required pam_exec.so quiet expose_authtok " + RootedPath("/bin/check") + "\n";
  const std::string open = ask + "account required pam_permit.so\n";
  const std::tuple<const char*, std::string, const char*, const char*, PasswordResult> rows[] = {
      {"right", open, "ann", "right", PasswordResult::kAccepted},
      {"wrong", open, "ann", "wrong", PasswordResult::kRefused},
      {"another user", open, "bob", "right", PasswordResult::kRefused},
      {"locked account", ask + "account required pam_deny.so\n", "ann", "right",
       PasswordResult::kRefused},
      {"missing module", "auth required absent.so\n", "ann", "right", PasswordResult::kUnavailable},
  };
  for (const auto& [name, service, user, password, result] : rows) {
    SCOPED_TRACE(name);
    Write("/etc/pam.d/webapi", service, 0644);
    EXPECT_EQ(result, Check(user, password));
  }
  Write("/etc/orbo/platform.conf", "auth=pma\n", 0644);
  EXPECT_EQ(PasswordResult::kUnavailable, Check("ann", "right"));
}
#endif

}  // namespace
}  // namespace ORBO
