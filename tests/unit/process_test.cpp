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
  return fstat(descriptor, &here) == 0 && stat("/dev/null", &null) == 0 &&
         here.st_rdev == null.st_rdev;
}

// Runs in a process of its own, since it replaces the standard streams.
void ForkWithPendingStreams() {
  if (std::freopen("input", "r", stdin) == nullptr ||
      std::freopen("output", "w", stdout) == nullptr) {
    _exit(1);
  }
  std::getchar();
  std::printf("buffered ");
  std::cout << "streamed";
  const pid_t child = QLIBCProcFork();
  if (child == 0) {
    std::printf(" by the child");
    const bool apart = IsNullDevice(0) && IsNullDevice(1) && IsNullDevice(2);
    std::exit(apart && std::getchar() == EOF ? 0 : 1);
  }
  int status = 1;
  waitpid(child, &status, 0);
  const bool reads_on = std::getchar() == 'b' && lseek(STDIN_FILENO, 0, SEEK_CUR) == 3;
  std::fflush(nullptr);
  _exit(status == 0 && reads_on ? 0 : 1);
}

TEST(ProcFork, ChildHoldsNoStreamOfTheParent) {
  const WebAPIDirectory directory;
  directory.Write("input", "abc");
  EXPECT_EXIT(ForkWithPendingStreams(), testing::ExitedWithCode(0), "");
  std::string written;
  ASSERT_TRUE(ReadWholeFile("output", written));
  EXPECT_EQ("buffered streamed", written);
}

int RestartBy(const WebAPIDirectory& directory, const std::string& command) {
  directory.Configure("httpd_restart = " + command + "\n");
  return QLIBNetService(kNetServiceHttpd, kNetServiceRestart, 0);
}

// Makes an executable script in the web-API directory; its path.
std::string Script(const std::string& name, const std::string& text) {
  std::ofstream(name) << "#!/bin/sh\n" << text;
  std::filesystem::permissions(name, std::filesystem::perms::owner_all);
  return std::filesystem::absolute(name).string();
}

TEST(NetService, RunsTheCommandWithoutAShellOrTheRequestsEnvironment) {
  const WebAPIDirectory directory;
  const std::string script =
      Script("show", "{ echo \"$#|$1|$2\"; tr '\\0' '\\n' < /proc/$$/environ; } > out\n");
  setenv("HTTP_SECRET", "x", 1);
  EXPECT_EQ(0, RestartBy(directory, script + " \t $(id);x  'two words' "));
  unsetenv("HTTP_SECRET");
  std::string out;
  ASSERT_TRUE(ReadWholeFile("out", out));
  EXPECT_EQ("3|$(id);x|'two\nPATH=/usr/sbin:/usr/bin:/sbin:/bin\n", out);
}

TEST(NetService, ReportsEveryFailure) {
  const WebAPIDirectory directory;
  Script("good", "exit 0\n");
  for (const std::string& command : {std::string(), std::string("good"), std::string("/none/such"),
                                     Script("fail", "exit 3\n"), Script("die", "kill -9 $$\n")}) {
    const LogCapture log;
    EXPECT_EQ(-1, RestartBy(directory, command)) << command;
    EXPECT_EQ(1U, log.lines().size());
  }
}

}  // namespace
}  // namespace ORBO
