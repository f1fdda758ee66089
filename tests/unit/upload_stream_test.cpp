#include "platform/linux/upload_stream.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <vector>

#include "platform/linux/multipart_header.h"
#include "platform/linux/stored_file.h"
#include "platform/linux/stored_files.h"
#include "unit/WebAPIDirectory.h"
#include "util/Descriptor.h"
#include "util/read_file.h"
#include "util/write_file.h"

namespace ORBO {
namespace {

constexpr char kType[] = "multipart/form-data; boundary=b0";
constexpr char kEnd[] = "\r\n--b0--\r\n";

std::string Part(const std::string& disposition, const std::string& content) {
  return "\r\n--b0\r\nContent-Disposition: form-data; " + disposition + "\r\n\r\n" + content;
}
std::string Field(const std::string& name, const std::string& text) {
  return Part("name=\"" + name + "\"", text);
}
std::string File(const std::string& name, const std::string& file, const std::string& content) {
  return Part("name=\"" + name + "\"; filename=\"" + file + "\"", content);
}

class Upload : public ::testing::Test {
 protected:
  // The result of a whole upload from `descriptor`, which is closed, then the fields and
  // the contents of the files.
  static std::string Read(int descriptor, const std::string& length, const std::string& type) {
    const Descriptor body(descriptor);
    UploadStream stream(descriptor, type, length);
    progress.clear();
    stream.SetProgress(
        [](unsigned long long done, unsigned long long) { progress.push_back(done); });
    QLIBSZHASH fields;
    QLIBSZHASH paths;
    std::string text = std::to_string(stream.ReadAll(".", fields, paths));
    for (const auto& [name, value] : fields.pairs) {
      text += " " + name + "=" + value;
    }
    for (const auto& [name, path] : paths.pairs) {
      std::string content;
      EXPECT_TRUE(ReadWholeFile(path, content));
      text += " " + name + ":" + content;
    }
    EXPECT_EQ(static_cast<long>(paths.pairs.size()), Files());
    StoredFiles::RemoveAll();
    EXPECT_EQ(0, Files());
    return text;
  }
  static int Open(const std::string& body) {
    const int file = memfd_create("body", MFD_CLOEXEC);
    EXPECT_TRUE(WriteAll(file, body) && lseek(file, 0, SEEK_SET) == 0);
    return file;
  }
  static std::string Load(const std::string& body, const std::string& length,
                          const std::string& type = kType) {
    return Read(Open(body), length, type);
  }
  static std::string Load(const std::string& body) {
    return Load(body, std::to_string(body.size()));
  }
  static inline std::vector<unsigned long long> progress;
  static long Files() { return std::distance(std::filesystem::directory_iterator("."), {}); }

 private:
  WebAPIDirectory directory_;
};

TEST(MultipartBoundary, OneToSeventyLegalCharactersNamedOnce) {
  const std::string longest(70, 'x');
  const std::string type = "multipart/form-data; boundary=";
  EXPECT_EQ("a b'()+_,-./:=?c",
            MultipartBoundary("Multipart/Form-Data;x=y;BOUNDARY=\"a b'()+_,-./:=?c\" ;"));
  for (const std::string& boundary : {std::string("a"), std::string("----=_Part_1/2"), longest}) {
    EXPECT_EQ(boundary, MultipartBoundary(type + boundary + " "));
  }
  for (const std::string& wrong :
       {type, type + "x" + longest, type + "\"\"", type + "\"a \"", type + "\"a", type + "a b",
        type + "a\tb", type + "\"a\"b", type + "a&b", type + "a; boundary=b",
        std::string("multipart/form-data"), std::string("multipart/mixed; boundary=a"),
        std::string("text/plain; x=multipart/form-data; boundary=a")}) {
    EXPECT_EQ("", MultipartBoundary(wrong)) << wrong;
  }
}

// What the header lines say: the name and, after "|", that of a file; "malformed".
std::string Parsed(const std::string& lines) {
  PartHeader header;
  return !ParsePartHeader(lines, header)
             ? "malformed"
             : header.name + (header.file_name ? "|" : "") + header.file_name.value_or("");
}

TEST(PartHeader, NamesTheFieldAndTheFile) {
  const std::pair<const char*, const char*> rows[] = {
      {"FORM-DATA ; NAME=a;", "a"},
      {"form-data; name=\"\"", ""},
      {"form-data; name=\"a;b=c\"; filename=\"x;y.txt\"", "a;b=c|x;y.txt"},
      {"form-data; name=a; filename=\"\"", "a|"},
      {"form-data; name=a; filename=x.txt", "a|x.txt"},
      {R"(form-data; name="a\"b\\c"; filename="say \"hi\".txt")", R"(a"b\c|say "hi".txt)"},
      {"form-data; name=\"a%22b%0D%0A\"; filename=\"%22x%22\"", "a\"b%0D%0A|\"x\""},
      {R"(form-data; name=a; filename="C:\temp\new.txt")", "a|new.txt"},
      {"form-data; name=a; filename=\"../../etc/passwd\"", "a|passwd"},
      {"form-data; name=a; filename=\"x/..\"", "a|"},
      {"form-data; name=a; filename=\"\xC3\xA4.txt\"", "a|\xC3\xA4.txt"},
      {"form-data; name=a; filename=\"f\"; filename*=UTF-8'de'%C3%A4%2fb%20c", "a|b c"},
      {"form-data; name=a; filename*=utf-8''%E2%82%AC.txt", "a|\xE2\x82\xAC.txt"},
  };
  for (const auto& [disposition, expected] : rows) {
    EXPECT_EQ(expected, Parsed(std::string("Content-Disposition: ") + disposition + "\r\n"));
  }
  for (const std::string wrong :
       {"form-data; name=a; filename*=utf-8''%C0%AFx", "form-data; name=a; filename*=utf-8''%00",
        "form-data; name=a; filename*=utf-16''x", "form-data; name=a; filename*=x", "form-data",
        "form-data; name=a; name=b", "form-data; name=\"a", "form-data; name=\"a\"x",
        "form-data; name=\"a\x01\"", "form-data; filename=x", "form-data; name",
        "attachment; name=a"}) {
    EXPECT_EQ("malformed", Parsed("Content-Disposition: " + wrong + "\r\n")) << wrong;
  }
}

TEST(PartHeader, LinesOfTheOneForm) {
  const std::string disposition = "content-disposition: form-data; name=a\r\n";
  std::string most;
  for (int i = 0; i < 31; ++i) {
    most += "X: 1\r\n";
  }
  EXPECT_EQ("a", Parsed(most + disposition));
  EXPECT_EQ("a", Parsed("Content-Disposition: form-data;\r\n\tname=a\r\nContent-Type: x\r\n"));
  for (const std::string& wrong :
       {most + "X: 1\r\n" + disposition, disposition + disposition, disposition + "no colon\r\n",
        disposition + ": no name\r\n", disposition + "X : 1\r\n", disposition + "X: 1\nY: 2\r\n",
        disposition + "X: 1\rY\r\n", disposition + std::string("X: \0\r\n", 6), " " + disposition,
        std::string("Content-Type: text/plain\r\n"), std::string()}) {
    EXPECT_EQ("malformed", Parsed(wrong)) << wrong;
  }
}

TEST_F(Upload, FieldsAndFiles) {
  const std::pair<std::string, std::string> rows[] = {
      {"--b0--", "1"},
      {"preamble" + Field("a", "1") + Field("a", "2") + kEnd + "epilogue", "1 a=2"},
      {Field("a", "") + Field("b", "\r\n\r\n") + kEnd, "1 a= b=\r\n\r\n"},
      {File("f", "x", "one") + File("f", "y", "two") + File("f.2", "z", "3") + Field("f", "no") +
           Field("f.name", "no") + kEnd,
       "1 f.2.2.name=z f.2.name=y f.name=x f:one f.2:two f.2.2:3"},
      {File("f.name", "x", "1") + File("f", "y", "2") + kEnd,
       "1 f.2.name=y f.name.name=x f.2:2 f.name:1"},
      {File("f", "x", "") + kEnd, "1 f.name=x f:"},
      {File("f", "", "") + Field("a", "1") + kEnd, "1 a=1"},
      {File("f", "", "content") + kEnd, "1 f.name= f:content"},
      {"--b0 \t\r\nContent-Disposition: form-data; name=a\r\n\r\n1\r\n--b0\t--\r\n", "-3"},
      {"--b0 \t\r\nContent-Disposition: form-data; name=a\r\n\r\n1\r\n--b0-- x", "1 a=1"},
      // Content that looks like a boundary, and boundaries that look like content.
      {Field("a", "\r\n--b\r\n--b01\r\n--b0-\n--b0--\r\r\n--b0-x\r\r\n-") + kEnd,
       "1 a=\r\n--b\r\n--b01\r\n--b0-\n--b0--\r\r\n--b0-x\r\r\n-"},
      {Field("a", "\r\n--b0x") + kEnd, "1 a=\r\n--b0x"},
      {"--b0\r\nContent-Disposition: form-data; name=a\r\n" + Field("b", "") + kEnd, "1 a= b="},
      // Never a success.
      {Field("a", "1"), "-1"},
      {Field("a", "1") + "\n--b0--\n", "-1"},
      {Field("a", "1") + "\r\n--b0\n", "-3"},
      {Field("a", "1") + "\r\n--b0\rx", "-3"},
      {Field("a", "1") + "\r\n--b0 x", "-3"},
      {"--b0\nContent-Disposition: form-data; name=a\n\n1\n--b0--\n", "-3"},
      {"--b0\r\n\r\nno header" + Field("a", "1") + kEnd, "-3"},
      {"--b0\r\nX: " + std::string(16400, 'x') + Field("a", "1") + kEnd, "-7"},
      {Field("a", "1") + "\r\n--b0" + std::string(1025, ' ') + "\r\n", "-3"},
  };
  for (const auto& [body, expected] : rows) {
    EXPECT_EQ(expected, Load(body)) << body.substr(0, 300);
  }
}

TEST_F(Upload, Limits) {
  const std::string mebibyte(1 << 20, 'x');
  const auto times = [](int count, const std::string& part) {
    std::string parts;
    while (count-- > 0) {
      parts += part;
    }
    return parts;
  };
  const std::string fields = times(4096, Field("a", ""));
  const std::string files = times(256, File("f", "x", ""));
  const std::string large = times(7, Field("a", mebibyte));
  const auto code = [](const std::string& body) { return Load(body + kEnd).substr(0, 2); };
  for (const std::string& most : {fields, files, Field("a", mebibyte), File("f", "x", large),
                                  large + Field("a", mebibyte.substr(8))}) {
    EXPECT_EQ("1 ", code(most)) << most.size();
  }
  for (const std::string& beyond :
       {fields + Field("a", ""), fields + File("f", "", ""), files + File("f", "x", ""),
        Field("a", mebibyte + "x"), large + Field("a", mebibyte.substr(7))}) {
    EXPECT_EQ("-7", code(beyond)) << beyond.size();
  }
}

TEST_F(Upload, ABodyOfTheWrongLengthIsNoSuccess) {
  const std::string body = Field("a", "1") + File("f", "x", "content") + kEnd;
  const std::size_t size = body.size();
  const std::string digits = std::to_string(size);
  for (const std::string& length : {std::to_string(size - 3), std::to_string(size + 1),
                                    std::string("9223372036854775807"), std::string("0")}) {
    EXPECT_EQ("-1", Load(body, length).substr(0, 2)) << length;
  }
  for (const std::string& length :
       {std::string("9223372036854775808"), std::string("18446744073709551617"), std::string(),
        std::string("-1"), "+" + digits, digits + " ", std::string("x")}) {
    EXPECT_EQ("-4", Load(body, length)) << length;
  }
  // The last line end is no part of the form.
  EXPECT_EQ("1 ", Load(body, std::to_string(size - 2)).substr(0, 2));
  EXPECT_EQ("-5", Load(body, digits, "multipart/form-data").substr(0, 2));
}

TEST_F(Upload, FindsBoundariesWhereverThePiecesEnd) {
  constexpr std::size_t kRead = UploadBody::kEnough;
  const std::string content = std::string(kRead, '\r') + "x--b0--\r\n";
  for (const std::string& next : {Field("b", "2"), std::string()}) {
    const std::string body = Field("a", "1") + File("f", "x", content) + next + kEnd;
    const std::string expected =
        (next.empty() ? "1 a=1 " : "1 a=1 b=2 ") + ("f.name=x f:" + content);
    // Two pieces: what lies behind the first is read when that one is used up.
    for (std::size_t n = 1; n < body.size(); n = n == 200 ? kRead : n + 1) {
      int ends[2];
      ASSERT_EQ(0, socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends));
      ASSERT_TRUE(WriteAll(ends[0], body.substr(0, n)) && WriteAll(ends[0], body.substr(n)));
      close(ends[0]);
      ASSERT_EQ(expected, Read(ends[1], std::to_string(body.size()), kType)) << n;
    }
  }
}

TEST_F(Upload, TellsOfProgressAtIntervals) {
  const std::string body = File("f", "x", std::string(4 << 20, 'x')) + kEnd;
  Load(body);
  EXPECT_GE(progress.size(), 15U);
  EXPECT_LE(progress.size(), 65U);
}

TEST_F(Upload, AFileThatCannotBeWrittenIsReported) {
  const std::string body = File("f", "x", std::string(100000, 'x')) + kEnd;
  const int file = Open(body);
  rlimit before;
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit none{0, before.rlim_max};
  EXPECT_EQ(0, setrlimit(RLIMIT_FSIZE, &none));
  const auto disposition = std::signal(SIGXFSZ, SIG_IGN);
  EXPECT_EQ("-12", Read(file, std::to_string(body.size()), kType));
  std::signal(SIGXFSZ, disposition);
  setrlimit(RLIMIT_FSIZE, &before);
}

// Whatever ends a process that has stored files, none is left; the end of a child and what
// a handler deals with are no end of this process.
TEST_F(Upload, NothingIsLeftWhenTheProcessEnds) {
  const auto overflow = [](auto& self, int depth) -> int {
    volatile char frame[4096];
    frame[0] = static_cast<char>(depth);
    return depth == 0 ? 0 : self(self, depth - 1) + frame[0];
  };
  const auto end_children = [] {
    for (const bool by_signal : {false, true}) {
      if (fork() == 0) {
        std::exit(by_signal ? raise(SIGTERM) : 0);
      }
      wait(nullptr);
    }
    return raise(SIGALRM) == 0 && Files() == 1 ? 0 : 1;
  };
  for (const int signal : {0, SIGSEGV}) {
    const pid_t child = fork();
    if (child == 0) {
      std::signal(SIGSEGV, SIG_DFL);  // not a sanitizer's report
      std::signal(SIGALRM, [](int) {});
      StoredFile file;
      const bool is_stored = file.Create(".") && file.Write("x") && file.Keep();
      std::exit(!is_stored ? 2 : signal == 0 ? end_children() : overflow(overflow, 1 << 28));
    }
    int status = 0;
    EXPECT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(signal, status);
    EXPECT_EQ(0, Files());
  }
}

}  // namespace
}  // namespace ORBO
