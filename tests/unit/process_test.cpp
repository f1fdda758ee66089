#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "platform/process.h"
#include "unit/LogCapture.h"
#include "unit/WebAPIDirectory.h"
#include "util/read_file.h"

namespace ORBO {
namespace {

bool IsNullDevice(int descriptor) {
  struct stat here;
  struct stat null;
  return fstat(descriptor, &here) == 0 && stat("/dev/null", &null) == 0 && S_ISCHR(here.st_mode) &&
         here.st_rdev == null.st_rdev;
}

TEST(ProcFork, ChildHoldsNoStreamOfTheParent) {
  const pid_t child = QLIBCProcFork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    _exit(IsNullDevice(0) && IsNullDevice(1) && IsNullDevice(2) ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(child, waitpid(child, &status, 0));
  EXPECT_EQ(0, status);
}

// Runs in a process of its own, since it replaces the standard streams.
void ForkWithPendingStreams(const char* input, const char* output) {
  if (std::freopen(input, "r", stdin) == nullptr || std::freopen(output, "w", stdout) == nullptr) {
    _exit(1);
  }
  std::FILE* const file = std::fopen("file", "w");
  std::fputs("once", file);
  std::getchar();
  std::printf("buffered ");
  std::cout << "streamed";
  const pid_t child = QLIBCProcFork();
  if (child == 0) {
    std::printf(" by the child");
    std::exit(std::getchar() == EOF ? 0 : 1);
  }
  int status = 1;
  waitpid(child, &status, 0);
  const bool reads_on = std::getchar() == 'b' && lseek(STDIN_FILENO, 0, SEEK_CUR) == 3;
  std::fflush(nullptr);
  _exit(status == 0 && reads_on ? 0 : 1);
}

TEST(ProcFork, PendingStreamsBelongToTheParent) {
  const WebAPIDirectory directory;
  directory.Write("input", "abc");
  EXPECT_EXIT(ForkWithPendingStreams("input", "output"), testing::ExitedWithCode(0), "");
  std::string written;
  ASSERT_TRUE(ReadWholeFile("output", written));
  EXPECT_EQ("buffered streamed", written);
  ASSERT_TRUE(ReadWholeFile("file", written));
  EXPECT_EQ("once", written);
}

class NetService : public testing::Test {
 protected:
  void Configure(const std::string& command) const {
    const std::string etc = std::string(std::getenv("WEBAPI_ROOT")) + "/etc/orbo";
    std::filesystem::create_directories(etc);
    std::ofstream(etc + "/platform.conf") << "httpd_restart = " << command << "\n";
  }
  // Makes an executable script in the web-API directory; its path.
  std::string Script(const std::string& name, const std::string& text) const {
    directory_.Write(name, "#!/bin/sh\n" + text);
    std::filesystem::permissions(name, std::filesystem::perms::owner_all);
    return std::filesystem::absolute(name).string();
  }
  static int Restart() { return QLIBNetService(kNetServiceHttpd, kNetServiceRestart, 0); }

  WebAPIDirectory directory_;
};

TEST_F(NetService, RunsTheCommandWithoutAShellOrTheRequestsEnvironment) {
  Configure(Script("show", "{ echo \"$#|$1|$2\"; tr '\\0' '\\n' < /proc/$$/environ; } > out\n") +
            " \t $(id);x  'two words' ");
  setenv("HTTP_SECRET", "x", 1);
  EXPECT_EQ(0, Restart());
  unsetenv("HTTP_SECRET");
  std::string out;
  ASSERT_TRUE(ReadWholeFile("out", out));
  EXPECT_EQ("3|$(id);x|'two\nPATH=/usr/sbin:/usr/bin:/sbin:/bin\n", out);
}

TEST_F(NetService, ReportsEveryFailure) {
  Script("good", "exit 0\n");
  const struct {
    const char* name;
    std::string command;
  } rows[] = {
      {"none", ""},
      {"relative", "good"},
      {"missing", "/nonexistent/command"},
      {"fails", Script("fail", "exit 3\n")},
      {"killed", Script("die", "kill -9 $$\n")},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Configure(row.command);
    const LogCapture log;
    EXPECT_EQ(-1, Restart());
    EXPECT_EQ(1U, log.lines().size());
  }
  const LogCapture log;
  EXPECT_EQ(-1, QLIBNetService(1, kNetServiceRestart, 0));
  EXPECT_EQ(-1, QLIBNetService(kNetServiceHttpd, 1, 0));
}

}  // namespace
}  // namespace ORBO
