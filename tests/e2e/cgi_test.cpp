// The program by itself: its output byte for byte, and environments and bodies
// that no web server lets through.

#include <cstdlib>

#include "server_test.h"

namespace e2e {

namespace {

constexpr char kContentType[] = "Content-type: application/json; charset=\"UTF-8\"\r\n";
constexpr char kCacheLines[] =
    "Cache-Control: max-age=0, no-cache, no-store, must-revalidate\r\n"
    "Pragma: no-cache\r\n"
    "Expires: 0\r\n"
    "\r\n";

class CgiProgram : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { root = std::make_unique<TestRoot>(); }
  static void TearDownTestSuite() { root.reset(); }

  // The output of the program, run with exactly the variables of `environment`
  // (shell words) and WEBAPI_ROOT.
  static std::string Run(const std::string& environment, const std::string& body = "") {
    const std::string files = root->RunDirectory();
    std::ofstream(files + "/input", std::ios::binary) << body;
    const std::string command = "cd " + root->WebAPIDirectory() + " && timeout 30 env -i " +
                                environment + " WEBAPI_ROOT=" + root->path() + " ./entry.cgi < " +
                                files + "/input > " + files + "/output 2> " + files + "/errors";
    EXPECT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(ReadFile(files + "/errors"), "");
    return ReadFile(files + "/output");
  }
  static std::string Get(const std::string& query, const std::string& more = "") {
    return Run("GATEWAY_INTERFACE=CGI/1.1 REQUEST_METHOD=GET HTTP_HOST=box:8080 " + more +
               " REQUEST_SCHEME=https SCRIPT_NAME=/webapi/entry.cgi 'QUERY_STRING=" + query + "'");
  }
  // What follows the header block of a form that is sent to "echo".
  static std::string Post(const std::string& method, const std::string& length,
                          const std::string& body) {
    const std::string output = Run("'REQUEST_METHOD=" + method + "' " + length +
                                       " CONTENT_TYPE=application/x-www-form-urlencoded "
                                       "'QUERY_STRING=" +
                                       Probe("echo") + "'",
                                   body);
    const std::string head = std::string(kContentType) + kCacheLines;
    return output.rfind(head, 0) == 0 ? output.substr(head.size()) : output;
  }

  static inline std::unique_ptr<TestRoot> root;
};

TEST_F(CgiProgram, WritesTheWholeAnswerInOneForm) {
  const std::string type = kContentType;
  EXPECT_EQ(Get(Probe("echo", "b=1&a=%22x%22")),
            type + kCacheLines + Success(R"({"a":"x","b":1})"));
  EXPECT_EQ(Get("api=ORBO.Test.Closed&version=1&method=echo"),
            type + "x-request-error: unauth\r\n" + kCacheLines + Failure(119));
  EXPECT_EQ(
      Get(Probe("redirect", "path=/x")),
      type + "Location: https://box:8080/x\r\nStatus: 302\r\n" + kCacheLines + Success("true"));
  EXPECT_EQ(Get(Probe("cookies", "value=v&path=/p")),
            type + "Set-Cookie: one=v; path=/\r\nSet-Cookie: two=2; path=/p\r\n" + kCacheLines +
                "{\"success\":true}\n");
  EXPECT_EQ(Get(Probe("throws")), type + "X-Before: kept\r\n" + kCacheLines + Failure(117));
  EXPECT_EQ(Run(""), type + kCacheLines + Failure(101));
}

TEST_F(CgiProgram, OpensTheCryptoLibraryForEncipheredParametersOnly) {
  const auto loads = [](const std::string& query) {
    const std::string report = root->RunDirectory() + "/loader";
    EXPECT_NE(Get(query, "LD_DEBUG=files LD_DEBUG_OUTPUT=" + report).find("\"success\":true"),
              std::string::npos)
        << query;
    return std::system(("cat " + report + ".* > " + report + "; rm " + report + ".*; " +
                        "grep -q 'libcrypto.*generating link map' " + report)
                           .c_str()) == 0;
  };
  const std::string sealed = root->RunDirectory() + "/sealed";
  ASSERT_EQ(std::system(("WEBAPI_ROOT=" + root->path() + " " E2E_COMMAND " encrypt '" +
                         Probe("echo", "a=1") + "' | tr -d '\\n' > " + sealed)
                            .c_str()),
            0);
  EXPECT_FALSE(loads(Probe("echo", "a=1")));
  EXPECT_FALSE(loads(Probe("echo", "a=__cIpHeRtExT")));
  EXPECT_TRUE(loads(ReadFile(sealed)));
  EXPECT_FALSE(loads("api=ORBO.ParameterKey&version=1&method=get")) << "the key is there";
}

TEST_F(CgiProgram, ReadsAFormForPostAlone) {
  for (const char* method : {"GET", "HEAD", "PUT", "post", "POST ", "", "DELETE"}) {
    EXPECT_EQ(Post(method, "CONTENT_LENGTH=3", "v=1"), Success("{}")) << method;
  }
}

TEST_F(CgiProgram, ReadsNoMoreThanTheLengthAndNoMoreThanThereIs) {
  EXPECT_EQ(Post("POST", "CONTENT_LENGTH=3", "v=12345"), Success(R"({"v":1})"));
  EXPECT_EQ(Post("POST", "CONTENT_LENGTH=16777216", "v=12345"), Success(R"({"v":12345})"));
  EXPECT_EQ(Post("POST", "CONTENT_LENGTH=5", ""), Success("{}"));
  EXPECT_EQ(Post("POST", "CONTENT_LENGTH=9", std::string("v=1\0&w=2", 8)), Success(R"({"v":1})"));
  EXPECT_EQ(Post("POST", "", "v=1"), Failure(101));
  for (const char* length : {"0", "-1", "-9223372036854775808", "", "three", "16777217",
                             "4294967299", "18446744073709551619", "99999999999999999999999999"}) {
    EXPECT_EQ(Post("POST", std::string("CONTENT_LENGTH=") + length, "v=1"), Failure(101)) << length;
  }
}

}  // namespace

}  // namespace e2e
