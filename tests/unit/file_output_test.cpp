#include "platform/file_output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "platform/linux/file_answer.h"
#include "platform/linux/send_content.h"
#include "unit/WebAPIDirectory.h"
#include "util/Descriptor.h"
#include "util/paths.h"

namespace ORBO {
namespace {

namespace fs = std::filesystem;

// The part as "first+length", "whole", or "none" where it lies outside.
std::string Part(const std::string& value, std::uint64_t size) {
  ByteRange part;
  const RangeKind kind = ReadByteRange(value, size, part);
  const std::string found = std::to_string(part.first) + "+" + std::to_string(part.length);
  return kind == RangeKind::kPart ? found : kind == RangeKind::kWhole ? "whole" : "none";
}

TEST(ByteRange, IsOneRangeThatLiesInTheContent) {
  std::istringstream rows(
      "bytes=0-0 0+1  Bytes=9-99 9+1  bytes=3- 3+7  bytes=-3 7+3  bytes=-99 0+10 "
      "bytes=0-99999999999999999999 0+10  bytes=99999999999999999999- none  bytes=10- none "
      "bytes=-0 none  bytes whole  bytes= whole  bytes=- whole  bytes=5-4 whole "
      "bytes=0-1,3-4 whole  bytes=0x1-2 whole  bytes=+1-2 whole  bytes=--2 whole  b=0-1 whole");
  for (std::string value, part; rows >> value >> part;) {
    EXPECT_EQ(part, Part(value, 10)) << value;
  }
  EXPECT_EQ("2+4", Part("bytes = 2-5 ", 10));
  EXPECT_EQ("4294967296+1", Part("bytes=4294967296-", 4294967297));
  EXPECT_EQ("none", Part("bytes=0-", 0));
  EXPECT_EQ("whole", Part("bytes=-1", 0));
}

// A file of ten bytes and what the client gets of it.
class FileOutput : public ::testing::Test {
 protected:
  FileOutput() {
    directory_.Write("file", "0123456789");
    const timespec times[] = {{0, UTIME_OMIT}, {1000000000, 5}};  // 2001-09-09 01:46:40
    utimensat(AT_FDCWD, "file", times, 0);
  }

  // `variables` as lines of an environment.
  template <typename Source>
  std::string Answer(Source source, const std::string& variables = "") {
    ::testing::internal::CaptureStdout();
    std::vector<std::string> names;
    std::istringstream lines(variables);
    for (std::string name, value; std::getline(lines, name, '=') && std::getline(lines, value);) {
      setenv(name.c_str(), value.c_str(), 1);
      names.push_back(name);
    }
    result_ = Output(source);
    for (const std::string& name : names) {
      unsetenv(name.c_str());
    }
    return ::testing::internal::GetCapturedStdout();
  }
  static int Output(const std::string& path) {
    return HTTPFileOutputer::Output(path.c_str(), "a/b");
  }
  static int Output(std::FILE* file) { return HTTPFileOutputer::Output(file, "", "a/b"); }

  static std::string Header(const std::string& answer, const char* name) {
    return std::string(AnswerHead(answer).Value(name));
  }
  static std::string Content(const std::string& answer) {
    return answer.substr(answer.find("\r\n\r\n") + 4);
  }

  const WebAPIDirectory directory_;
  int result_ = 0;
};

TEST_F(FileOutput, FollowsTheRequestsConditionsAndRange) {
  const std::string etag = Header(Answer("file"), "ETag");
  const std::string date = "Sun, 09 Sep 2001 01:46:40 GMT";
  const std::string later = "Sun Sep  9 01:46:41 2001";
  const std::string earlier = "Sunday, 09-Sep-01 01:46:39 GMT";
  const std::string list = "\"x\", W/" + etag + ", \"y\"";
  const std::string all = "0123456789";
  const std::tuple<std::string, std::string, int, std::string, const char*> rows[] = {
      {"GET", "", 200, all, ""},
      {"HEAD", "HTTP_RANGE=bytes=0-1", 200, "", ""},
      {"GET", "HTTP_RANGE=bytes=2-3", 206, "23", "bytes 2-3/10"},
      {"GET", "HTTP_RANGE=bytes=10-", 416, "", "bytes */10"},
      {"POST", "HTTP_RANGE=bytes=2-3", 200, all, ""},
      {"GET", "HTTP_RANGE=bytes=9-\nHTTP_IF_RANGE=" + etag, 206, "9", "bytes 9-9/10"},
      {"GET", "HTTP_RANGE=bytes=9-\nHTTP_IF_RANGE=" + date, 206, "9", "bytes 9-9/10"},
      {"GET", "HTTP_RANGE=bytes=9-\nHTTP_IF_RANGE=W/" + etag, 200, all, ""},
      {"GET", "HTTP_RANGE=bytes=9-\nHTTP_IF_RANGE=" + later, 200, all, ""},
      {"GET", "HTTP_IF_NONE_MATCH=" + list, 304, "", ""},
      {"HEAD", "HTTP_IF_NONE_MATCH=*", 304, "", ""},
      {"POST", "HTTP_IF_NONE_MATCH=" + etag, 412, "", ""},
      {"GET", "HTTP_IF_NONE_MATCH=\"x\"\nHTTP_IF_MODIFIED_SINCE=" + date, 200, all, ""},
      {"GET", "HTTP_IF_MODIFIED_SINCE=" + later, 304, "", ""},
      {"POST", "HTTP_IF_MODIFIED_SINCE=" + later, 200, all, ""},
      {"GET", "HTTP_IF_MODIFIED_SINCE=" + earlier, 200, all, ""},
      {"GET", "HTTP_IF_MODIFIED_SINCE=" + date + "x", 200, all, ""},
      {"GET", "HTTP_IF_MATCH=\"x\" , " + etag + "\nHTTP_IF_UNMODIFIED_SINCE=" + earlier, 200, all,
       ""},
      {"GET", "HTTP_IF_MATCH=" + list, 412, "", ""},
      {"GET", "HTTP_IF_MATCH=" + etag.substr(0, etag.size() - 1), 412, "", ""},
      {"GET", "HTTP_IF_UNMODIFIED_SINCE=" + earlier + "\nHTTP_RANGE=bytes=0-1", 412, "", ""},
  };
  for (const auto& [method, headers, status, content, range] : rows) {
    SCOPED_TRACE(method + " " + headers);
    const std::string answer = Answer("file", "REQUEST_METHOD=" + method + "\n" + headers);
    EXPECT_EQ(kFileOutputDone, result_);
    EXPECT_EQ(status == 200 ? "" : std::to_string(status), Header(answer, "Status").substr(0, 3));
    EXPECT_EQ(content, Content(answer));
    EXPECT_EQ(range, Header(answer, "Content-Range"));
    const std::size_t length = status == 200 ? all.size() : content.size();
    EXPECT_EQ(status == 304 ? "" : std::to_string(length), Header(answer, "Content-Length"));
    EXPECT_EQ(date, Header(answer, "Last-Modified"));
    EXPECT_EQ("a/b", Header(answer, "Content-Type"));
  }
}

TEST_F(FileOutput, NamesThePathToTheWebServerWhereThatCanReadIt) {
  for (const std::string name : {"plain", "a%41", "end ", "a\nX: y", "\xFF"}) {
    directory_.Write(name, "content");
    for (const std::string mode : {"MOD_X_SENDFILE_ENABLED=YeS\n", "MOD_X_SENDFILE_ENABLED=no\n"}) {
      SCOPED_TRACE(name + " " + mode);
      const std::string answer = Answer("./" + name, mode);
      const bool is_named = name == "plain" && mode[23] == 'Y';
      EXPECT_EQ(is_named ? fs::canonical(name) : "", Header(answer, "X-Sendfile"));
      EXPECT_EQ(is_named ? "" : "content", Content(answer));
      EXPECT_EQ(is_named ? "" : "7", Header(answer, "Content-Length"));
    }
  }
  const std::string known =
      Answer("plain", "REQUEST_METHOD=GET\nHTTP_IF_NONE_MATCH=*\nMOD_X_SENDFILE_ENABLED=yes");
  EXPECT_EQ("304 Not Modified", Header(known, "Status"));
  EXPECT_EQ("", Header(known, "X-Sendfile"));
}

TEST_F(FileOutput, SendsStreamsFromWhereTheyStand) {
  std::FILE* const file = std::fopen("file", "r");
  std::fgetc(file);
  EXPECT_EQ("123456789", Content(Answer(file)));
  EXPECT_EQ("9", Content(Answer(file, "REQUEST_METHOD=GET\nHTTP_RANGE=bytes=8-")));
  std::fseek(file, 20, SEEK_SET);
  EXPECT_EQ("", Content(Answer(file)));
  EXPECT_EQ(kFileOutputDone, result_);
  std::fclose(file);
  std::FILE* const pipe = popen("seq 20000", "re");
  const std::string answer = Answer(pipe);
  EXPECT_EQ(108894U, Content(answer).size());
  EXPECT_EQ("", Header(answer, "Content-Length"));
  pclose(pipe);
}

TEST_F(FileOutput, WaitsUntilALeaseIsGivenUp) {
  static int leased;
  leased = open("file", O_RDWR | O_CLOEXEC);
  std::signal(SIGIO, [](int) { fcntl(leased, F_SETLEASE, F_UNLCK); });
  ASSERT_EQ(0, fcntl(leased, F_SETLEASE, F_WRLCK));
  EXPECT_EQ("0123456789", Content(Answer("file")));
  std::signal(SIGIO, SIG_DFL);
  close(leased);
}

TEST_F(FileOutput, WritesNothingOnFailure) {
  mkfifo("fifo", 0600);
  const std::pair<const char*, int> rows[] = {
      {"none", ENOENT}, {".", EISDIR}, {"fifo", EINVAL}, {"/dev/null", EINVAL}, {"", ENOENT}};
  for (const auto& [path, error] : rows) {
    EXPECT_EQ("", Answer(path)) << path;
    EXPECT_EQ(-error, result_) << path;
  }
  std::FILE* const writer = std::fopen("file", "a");
  std::FILE* const directory = std::fopen(".", "r");
  for (std::FILE* file : {writer, directory, static_cast<std::FILE*>(nullptr)}) {
    EXPECT_EQ("", Answer(file));
    EXPECT_LT(result_, 0);
  }
  std::fclose(writer);
  std::fclose(directory);
}

TEST_F(FileOutput, EndsQuietlyWhereTheFileOrTheReaderIsGone) {
  int ends[2];
  ASSERT_EQ(0, pipe(ends));
  const Descriptor file(open("file", O_RDONLY | O_CLOEXEC));
  EXPECT_FALSE(SendContent(ends[1], file.get(), 4, 100)) << "the file is shorter";
  char text[16] = {};
  EXPECT_EQ(6, read(ends[0], text, sizeof text));
  close(ends[0]);
  {
    const BrokenPipeGuard guard;
    EXPECT_FALSE(SendContent(ends[1], file.get(), 0, 10));
  }
  close(ends[1]);
  EXPECT_EQ(SIG_DFL, std::signal(SIGPIPE, SIG_DFL));
}

TEST_F(FileOutput, TellsTypesByTheExtension) {
  const std::string etc = RootedPath("/etc");
  fs::create_directories(etc);
  std::ofstream(etc + "/mime.types")
      << "# text/wrong abc\n\ntext/none\nchemical/x-abc\tdef  ABC\nvideo/wrong mp4\n";
  std::istringstream rows(
      "a.MP4 video/mp4  /d.gz/a.tar.gz application/gzip  x.abc chemical/x-abc "
      "x.Def chemical/x-abc  x.wrong -  d.png/x -  /.png -  x. -");
  for (std::string name, type; rows >> name >> type;) {
    EXPECT_EQ(type == "-" ? "application/octet-stream" : type,
              HTTPFileOutputer::GetMimeType(name.c_str()))
        << name;
  }
  EXPECT_EQ("application/octet-stream", HTTPFileOutputer::GetMimeType(nullptr));
}

}  // namespace
}  // namespace ORBO
