// The program by itself: its output byte for byte, and environments and bodies
// that no web server lets through.

#include <gtest/gtest.h>

#include "server_test.h"
#include "support/CgiProcess.h"

namespace e2e {

namespace {

class CgiProgram : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { root = std::make_unique<TestRoot>(); }
  static void TearDownTestSuite() { root.reset(); }

  static CgiResult Run(const std::vector<std::string>& environment, const std::string& body = "") {
    CgiResult result = RunCgi(*root, environment, body);
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(result.signal, 0);
    EXPECT_FALSE(result.timed_out);
    EXPECT_EQ(result.errors, "");
    return result;
  }

  // What follows the header block.
  static std::string Body(const CgiResult& result) {
    const std::size_t end = result.output.find("\r\n\r\n");
    return end == std::string::npos ? "(no header block)" : result.output.substr(end + 4);
  }

 private:
  static inline std::unique_ptr<TestRoot> root;
};

constexpr char kContentType[] = "Content-type: application/json; charset=\"UTF-8\"\r\n";
constexpr char kCacheLines[] =
    "Cache-Control: max-age=0, no-cache, no-store, must-revalidate\r\n"
    "Pragma: no-cache\r\n"
    "Expires: 0\r\n"
    "\r\n";

std::vector<std::string> Get(const std::string& query) {
  return {"GATEWAY_INTERFACE=CGI/1.1", "REQUEST_METHOD=GET",   "QUERY_STRING=" + query,
          "HTTP_HOST=box:8080",        "REQUEST_SCHEME=https", "SCRIPT_NAME=/webapi/entry.cgi"};
}

std::vector<std::string> Post(const std::string& length) {
  return {"REQUEST_METHOD=POST", "QUERY_STRING=" + Probe("echo"), "CONTENT_LENGTH=" + length,
          "CONTENT_TYPE=application/x-www-form-urlencoded"};
}

TEST_F(CgiProgram, WritesTheWholeAnswerInOneForm) {
  EXPECT_EQ(Run(Get(Probe("echo", "b=1&a=%22x%22"))).output,
            std::string(kContentType) + kCacheLines + Success(R"({"a":"x","b":1})"));
  EXPECT_EQ(Run(Get("api=ORBO.Test.Closed&version=1&method=echo")).output,
            std::string(kContentType) + "x-request-error: unauth\r\n" + kCacheLines + Failure(119));
  EXPECT_EQ(Run(Get(Probe("redirect", "path=/x"))).output,
            std::string(kContentType) + "Location: https://box:8080/x\r\nStatus: 302\r\n" +
                kCacheLines + Success("true"));
  EXPECT_EQ(Run(Get(Probe("cookies", "value=v&path=/p"))).output,
            std::string(kContentType) +
                "Set-Cookie: one=v; path=/\r\nSet-Cookie: two=2; path=/p\r\n" + kCacheLines +
                "{\"success\":true}\n");
  EXPECT_EQ(Run(Get(Probe("throws"))).output,
            std::string(kContentType) + "X-Before: kept\r\n" + kCacheLines + Failure(117));
  EXPECT_EQ(Run({}).output, std::string(kContentType) + kCacheLines + Failure(101));
}

TEST_F(CgiProgram, KnowsThreeRequestMethods) {
  // The form is read for POST alone.
  for (const std::string method : {"GET", "HEAD", "PUT", "post", "POST ", "", "DELETE"}) {
    SCOPED_TRACE(method);
    std::vector<std::string> environment = Post("3");
    environment[0] = "REQUEST_METHOD=" + method;
    EXPECT_EQ(Body(Run(environment, "v=1")), Success("{}"));
  }
  EXPECT_EQ(Body(Run(Post("3"), "v=1")), Success(R"({"v":1})"));
}

TEST_F(CgiProgram, ReadsNoMoreThanTheLengthAndNoMoreThanThereIs) {
  struct Row {
    const char* length;
    std::string body;
    std::string expected;
  };
  const Row rows[] = {
      {"3", "v=12345", Success(R"({"v":1})")},
      {"1000", "v=12345", Success(R"({"v":12345})")},
      {"16777216", "v=12345", Success(R"({"v":12345})")},
      {"5", "", Success("{}")},
      {"9", std::string("v=1\0&w=2", 8), Success(R"({"v":1})")},
      {"0", "v=1", Failure(101)},
      {"-1", "v=1", Failure(101)},
      {"-9223372036854775808", "v=1", Failure(101)},
      {"", "v=1", Failure(101)},
      {"three", "v=1", Failure(101)},
      {"16777217", "v=1", Failure(101)},
      {"4294967299", "v=1", Failure(101)},
      {"18446744073709551619", "v=1", Failure(101)},
      {"99999999999999999999999999", "v=1", Failure(101)},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.length);
    EXPECT_EQ(Body(Run(Post(row.length), row.body)), row.expected);
  }
  std::vector<std::string> without_length = Post("3");
  without_length.erase(without_length.begin() + 2);
  EXPECT_EQ(Body(Run(without_length, "v=1")), Failure(101));
}

TEST_F(CgiProgram, TakesTheSessionFromAParameter) {
  std::vector<std::string> environment = Get(Probe("facts", "_sid=S"));
  environment.push_back("HTTP_COOKIE=first=1; id=OLD");
  EXPECT_EQ(Body(Run(environment)),
            Success(R"({"cookies":"1,none","host":"box","method":1,"proto":"https",)"
                    R"("session":"S"})"));
}

}  // namespace

}  // namespace e2e
