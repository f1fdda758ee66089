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
#include <vector>

#include "platform/linux/byte_range.h"
#include "platform/linux/send_content.h"
#include "unit/WebAPIDirectory.h"
#include "util/Descriptor.h"
#include "util/paths.h"

namespace ORBO {
namespace {

TEST(ByteRange, IsOneRangeThatLiesInTheContent) {
  const struct {
    const char* value;
    std::uint64_t size;
    RangeKind kind;
    std::uint64_t first;
    std::uint64_t length;
  } rows[] = {
      {"bytes=0-0", 10, RangeKind::kPart, 0, 1},
      {"Bytes = 2-5 ", 10, RangeKind::kPart, 2, 4},
      {"bytes=9-99", 10, RangeKind::kPart, 9, 1},
      {"bytes=3-", 10, RangeKind::kPart, 3, 7},
      {"bytes=-3", 10, RangeKind::kPart, 7, 3},
      {"bytes=-99", 10, RangeKind::kPart, 0, 10},
      {"bytes=4294967296-", 4294967297, RangeKind::kPart, 4294967296, 1},
      {"bytes=0-99999999999999999999", 10, RangeKind::kPart, 0, 10},
      {"bytes=10-", 10, RangeKind::kUnsatisfiable, 0, 0},
      {"bytes=99999999999999999999-", 10, RangeKind::kUnsatisfiable, 0, 0},
      {"bytes=-0", 10, RangeKind::kUnsatisfiable, 0, 0},
      {"bytes=0-", 0, RangeKind::kUnsatisfiable, 0, 0},
      {"bytes=-1", 0, RangeKind::kWhole, 0, 0},
      {"", 10, RangeKind::kWhole, 0, 0},
      {"bytes", 10, RangeKind::kWhole, 0, 0},
      {"bytes=", 10, RangeKind::kWhole, 0, 0},
      {"bytes=-", 10, RangeKind::kWhole, 0, 0},
      {"bytes=5-4", 10, RangeKind::kWhole, 0, 0},
      {"bytes=0-1,3-4", 10, RangeKind::kWhole, 0, 0},
      {"bytes=0x1-2", 10, RangeKind::kWhole, 0, 0},
      {"bytes=+1-2", 10, RangeKind::kWhole, 0, 0},
      {"bytes=--2", 10, RangeKind::kWhole, 0, 0},
      {"lines=0-1", 10, RangeKind::kWhole, 0, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.value);
    ByteRange range;
    EXPECT_EQ(row.kind, ReadByteRange(row.value, row.size, range));
    EXPECT_EQ(row.first, range.first);
    EXPECT_EQ(row.length, range.length);
  }
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
    std::vector<std::string> names;
    std::istringstream lines(variables);
    for (std::string line; std::getline(lines, line);) {
      names.push_back(line.substr(0, line.find('=')));
      setenv(names.back().c_str(), line.c_str() + names.back().size() + 1, 1);
    }
    ::testing::internal::CaptureStdout();
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

  // The value of a header of `answer`; "-" if it is not there.
  static std::string Header(const std::string& answer, const std::string& name) {
    const std::size_t at = ("\r\n" + answer).find("\r\n" + name + ": ");
    return at == std::string::npos ? "-"
                                   : answer.substr(at + name.size() + 2,
                                                   answer.find("\r\n", at) - at - name.size() - 2);
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
  const struct {
    const char* method;
    std::string headers;  // by HTTP_ and these names
    int status;
    std::string content;
    const char* range;
  } rows[] = {
      {"GET", "", 200, all, "-"},
      {"HEAD", "RANGE=bytes=0-1", 200, "", "-"},
      {"GET", "RANGE=bytes=2-3", 206, "23", "bytes 2-3/10"},
      {"GET", "RANGE=bytes=10-", 416, "", "bytes */10"},
      {"POST", "RANGE=bytes=2-3", 200, all, "-"},
      {"GET", "RANGE=bytes=9-\nIF_RANGE=" + etag, 206, "9", "bytes 9-9/10"},
      {"GET", "RANGE=bytes=9-\nIF_RANGE=" + date, 206, "9", "bytes 9-9/10"},
      {"GET", "RANGE=bytes=9-\nIF_RANGE=W/" + etag, 200, all, "-"},
      {"GET", "RANGE=bytes=9-\nIF_RANGE=" + later, 200, all, "-"},
      {"GET", "IF_NONE_MATCH=" + list, 304, "", "-"},
      {"HEAD", "IF_NONE_MATCH=*", 304, "", "-"},
      {"POST", "IF_NONE_MATCH=" + etag, 412, "", "-"},
      {"GET", "IF_NONE_MATCH=\"x\"\nIF_MODIFIED_SINCE=" + date, 200, all, "-"},
      {"GET", "IF_MODIFIED_SINCE=" + later, 304, "", "-"},
      {"POST", "IF_MODIFIED_SINCE=" + later, 200, all, "-"},
      {"GET", "IF_MODIFIED_SINCE=" + earlier, 200, all, "-"},
      {"GET", "IF_MODIFIED_SINCE=" + date + "x", 200, all, "-"},
      {"GET", "IF_MATCH=\"x\" , " + etag + "\nIF_UNMODIFIED_SINCE=" + earlier, 200, all, "-"},
      {"GET", "IF_MATCH=" + list, 412, "", "-"},
      {"GET", "IF_MATCH=" + etag.substr(0, etag.size() - 1), 412, "", "-"},
      {"GET", "IF_UNMODIFIED_SINCE=" + earlier + "\nRANGE=bytes=0-1", 412, "", "-"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.method + (" " + row.headers));
    std::string variables = "\n" + row.headers;
    for (std::size_t at = 0; (at = variables.find('\n', at)) != std::string::npos; ++at) {
      variables.insert(at + 1, "HTTP_");
    }
    const std::string answer =
        Answer("file", std::string("REQUEST_METHOD=") + row.method + variables);
    EXPECT_EQ(kFileOutputDone, result_);
    EXPECT_EQ(row.status == 200 ? "-" : std::to_string(row.status),
              Header(answer, "Status").substr(0, 3));
    EXPECT_EQ(row.content, Content(answer));
    EXPECT_EQ(row.range, Header(answer, "Content-Range"));
    const std::size_t length = row.status == 200 ? all.size() : row.content.size();
    EXPECT_EQ(row.status == 304 ? "-" : std::to_string(length), Header(answer, "Content-Length"));
    EXPECT_EQ(date, Header(answer, "Last-Modified"));
    EXPECT_EQ("a/b", Header(answer, "Content-Type"));
  }
}

TEST_F(FileOutput, NamesThePathToTheWebServerWhereThatCanReadIt) {
  for (const std::string name : {"plain", "a%41", "end ", "a\nX: y"}) {
    directory_.Write(name, "content");
    for (const std::string enabled : {"YeS", "no"}) {
      SCOPED_TRACE(name + " " + enabled);
      const std::string answer = Answer("./" + name, "MOD_X_SENDFILE_ENABLED=" + enabled);
      const bool is_named = name == "plain" && enabled == "YeS";
      EXPECT_EQ(is_named ? std::filesystem::canonical(name) : "-", Header(answer, "X-Sendfile"));
      EXPECT_EQ(is_named ? "" : "content", Content(answer));
      EXPECT_EQ(is_named ? "-" : "7", Header(answer, "Content-Length"));
      const std::string known =
          Answer("./" + name, "REQUEST_METHOD=GET\nHTTP_IF_NONE_MATCH=" + Header(answer, "ETag") +
                                  "\nMOD_X_SENDFILE_ENABLED=" + enabled);
      EXPECT_EQ("304 Not Modified", Header(known, "Status"));
      EXPECT_EQ("-", Header(known, "X-Sendfile"));
    }
  }
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
  EXPECT_EQ("-", Header(answer, "Content-Length"));
  pclose(pipe);
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
  EXPECT_STREQ("456789", text);
  close(ends[0]);
  {
    const BrokenPipeGuard guard;
    EXPECT_FALSE(SendContent(ends[1], file.get(), 0, 10));
  }
  struct sigaction now;
  sigaction(SIGPIPE, nullptr, &now);
  EXPECT_EQ(SIG_DFL, now.sa_handler);
  close(ends[1]);
}

TEST_F(FileOutput, TellsTypesByTheExtension) {
  const std::string etc = RootedPath("/etc");
  std::filesystem::create_directories(etc);
  std::ofstream(etc + "/mime.types")
      << "# text/wrong abc\n\ntext/none\nchemical/x-abc\tdef  ABC\nvideo/wrong mp4\n";
  const std::string unknown = "application/octet-stream";
  const std::pair<const char*, std::string> rows[] = {
      {"a.MP4", "video/mp4"},
      {"/d.gz/a.tar.gz", "application/gzip"},
      {"x.abc", "chemical/x-abc"},
      {"x.Def", "chemical/x-abc"},
      {"x.wrong", unknown},
      {"d.png/x", unknown},
      {"/.png", unknown},
      {"x.", unknown},
      {"", unknown},
      {nullptr, unknown},
  };
  for (const auto& [name, type] : rows) {
    EXPECT_EQ(type, HTTPFileOutputer::GetMimeType(name)) << type;
  }
}

}  // namespace
}  // namespace ORBO
