#include "util/read_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <fstream>
#include <string>
#include <thread>

#include "unit/WebAPIDirectory.h"

namespace ORBO {
namespace {

TEST(ReadFile, ReadsRegularFilesOnly) {
  const WebAPIDirectory directory;
  const std::string text = std::string("a\0b\n", 4) + std::string(100000, 'x');
  directory.Write("full", text);
  directory.Write("empty", "");
  ASSERT_EQ(0, mkfifo("pipe", 0600));
  const struct {
    const char* path;
    bool expected;
    int error;
    std::string content;
  } rows[] = {
      {"full", true, 0, text},  {"empty", true, 0, ""},      {"missing", false, ENOENT, {}},
      {".", false, EISDIR, {}}, {"pipe", false, EINVAL, {}}, {"/dev/null", false, EINVAL, {}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.path);
    std::string out = "before";
    errno = 0;
    EXPECT_EQ(row.expected, ReadWholeFile(row.path, out));
    EXPECT_EQ(row.error, errno);
    EXPECT_EQ(row.expected ? row.content : "before", out);
  }
  // Files of the kernel have no size.
  std::string status;
  EXPECT_TRUE(ReadWholeFile("/proc/self/status", status));
  EXPECT_NE(std::string::npos, status.find("\nPid:"));
}

TEST(ReadFile, ReadsAPipeUpToTheLimitOrTheEnd) {
  const std::string text(200001, 'y');
  for (const unsigned long long limit : {0ULL, 1ULL, 4096ULL, 200000ULL, 200001ULL, ~0ULL}) {
    SCOPED_TRACE(limit);
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    std::thread writer([&text, ends] {
      // The reader may stop early and close the pipe.
      sigset_t signals;
      sigemptyset(&signals);
      sigaddset(&signals, SIGPIPE);
      pthread_sigmask(SIG_BLOCK, &signals, nullptr);
      std::size_t done = 0;
      while (done < text.size()) {
        const ssize_t count = write(ends[1], text.data() + done, text.size() - done);
        if (count < 0) {
          break;
        }
        done += static_cast<std::size_t>(count);
      }
      close(ends[1]);
    });
    std::string out;
    EXPECT_TRUE(ReadUpTo(ends[0], limit, out));
    close(ends[0]);
    writer.join();
    EXPECT_EQ(text.substr(0, limit), out);
  }
  std::string out = "before";
  EXPECT_FALSE(ReadUpTo(-1, 10, out));
  EXPECT_EQ(EBADF, errno);
}

}  // namespace
}  // namespace ORBO
