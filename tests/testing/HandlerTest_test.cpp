#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <webapi/testing/HandlerTest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <sstream>

namespace {

using ORBO::HandlerAnswer;
using ORBO::HandlerTest;

constexpr char kProbe[] = "ORBO.Test.Probe";
constexpr char kPermission[] = "ORBO.Test.Permission";
constexpr char kPrivileged[] = "ORBO.Test.Permission.Privileged";

TEST(HandlerTest, BringsParametersAsTheyAreAndFieldsAsText) {
  HandlerTest test(WEBAPI_HANDLER_FILES);
  const std::string params = R"({"a&b=":" +%\"\u0000","list":[1,"1",null],"n":1.5,"t":"5"})";
  for (const char* method : {"GET", "POST", "PUT"}) {
    test.Request("{\"params\":" + params + "}").HttpMethod(method);
    EXPECT_EQ(test.Call(kProbe, 1, "echo").Text(), "{\"data\":" + params + ",\"success\":true}");
  }
  test.Request(R"({"params": {"n": [5, "x"]}, "headers": {"X-Type-Name": "x"},
                   "files": [{"field": "f\"1", "name": "a\".txt", "content": "--b\r\n\u0000"}]})");
  const HandlerAnswer answer = test.File("g", "b", "2").Call(kProbe, 1, "upload");
  EXPECT_EQ(answer.Data()["n"], "[5,\"x\"]");
  EXPECT_EQ(answer.Data()["f\"1"], Json::Value(std::string("file --b\r\n\0", 11)));
  EXPECT_EQ(answer.Data()["f\"1.name"], "a\".txt");
  EXPECT_EQ(answer.Data()["g"], "file 2");
}

TEST(HandlerTest, ChecksWhoCalls) {
  const struct {
    const char* request;
    const char* api;
    const char* method;
    const char* expected;
  } rows[] = {
      {R"({})", kPermission, "who", "119"},
      {R"({"session": {"user": "ada"}})", kPermission, "normal.local", "ada 15"},
      {R"({"session": {"user": "ada"}})", kPermission, "admin.local", "105"},
      {R"({"session": {"user": "ada"}, "headers": {"Cookie": "a=b"}})", kPermission, "who",
       "ada 15"},
      {R"({"session": {"user": "ada"}, "skipPermission": true})", kPermission, "admin.local",
       "ada 15"},
      {R"({"session": {"user": "N\\ada"}})", kPermission, "normal.domain", "N\\ada 15"},
      {R"({"session": {"user": "a@b", "administrator": true}})", kPermission, "admin.ldap",
       "a@b 15"},
      {R"({"session": {"user": "ada", "idle": 16}})", kPermission, "who", "106"},
      {R"({"session": {"user": "ada", "idle": 16, "timeout": 17}})", kPermission, "who", "ada 17"},
      {R"({"session": {"user": "ada", "address": "192.0.2.7"}})", kPermission, "who", "105"},
      {R"({"session": {"user": "ada", "address": "192.0.2.7"},
           "variables": {"REMOTE_ADDR": "192.0.2.7"}})",
       kPermission, "who", "ada 15"},
      {R"({"session": {"user": "ada"}})", kPrivileged, "who", "105"},
      {R"({"session": {"user": "ada", "privileges": ["ORBO.Test"]}})", kPrivileged, "who",
       "ada 15"},
  };
  for (const auto& row : rows) {
    HandlerTest test(WEBAPI_HANDLER_FILES);
    const HandlerAnswer answer = test.Request(row.request).Call(row.api, 1, row.method);
    const Json::Value& who = answer.Data();
    EXPECT_EQ(answer.Success() ? who["user"].asString() + " " + who["timeout"].asString()
                               : std::to_string(answer.Code()),
              row.expected)
        << row.request << answer.Text();
  }
}

TEST(HandlerTest, StartsCallsAsAServerDoes) {
  sigset_t blocked;
  sigset_t before;
  sigfillset(&blocked);
  sigprocmask(SIG_BLOCK, &blocked, &before);
  const mode_t mask = umask(077);
  HandlerTest test(WEBAPI_HANDLER_FILES);
  umask(mask);
  sigprocmask(SIG_SETMASK, &before, nullptr);
  test.HttpMethod("POST").Header("Content-type", "text/plain");
  EXPECT_EQ(test.Call(kProbe, 1, "start").Text(),
            R"({"data":[18,0,"","text/plain"],"success":true})");
  test.Param("name", "Location").Param("value", "/x");
  EXPECT_EQ(test.Call(kProbe, 1, "header").Status(), 302);
}

TEST(HandlerTest, TakesNoFailureForAnAnswer) {
  // What the test's program has for its own exit is not for that of a call.
  static const pid_t owner = getpid();
  std::atexit([] { getpid() == owner ? void() : _exit(77); });
  HandlerTest test(WEBAPI_HANDLER_FILES);
  test.TimeLimit(1);
  const std::pair<const char*, const char*> rows[] = {
      {"upload", "ended by signal 6 (Aborted) before it had answered"},
      {"leave", "ended with exit status 0 before it had answered"},
      {"hang", "did not come to its end within 1 s"},
  };
  for (const auto& [method, fault] : rows) {
    const HandlerAnswer answer =
        test.Param("crash", "yes").File("f", "f", "").Call(kProbe, 1, method);
    EXPECT_NE(answer.Text().find(fault), std::string::npos) << answer.Text();
    EXPECT_FALSE(answer.Success());
    EXPECT_EQ(answer.Code(), -1);
    EXPECT_EQ(answer.Status(), 0);
    EXPECT_EQ(test.Call(kProbe, 1, "echo").Text(), R"({"data":{},"success":true})");
  }
  EXPECT_EQ(HandlerTest("none.so|").User("ada").Call(kProbe, 1, "echo").Fault(),
            "cannot use the file none.so: No such file or directory");
  EXPECT_EQ(HandlerTest("").Administrator("a b").Call(kProbe, 1, "echo").Fault(),
            "cannot make an administrator of a b: Invalid argument");
  EXPECT_EQ(test.Request(R"({"sesion": {}})").Call(kProbe, 1, "echo").Fault(),
            "cannot read the request's member \"sesion\"");
}

TEST(HandlerTest, LeavesTheTestAlone) {
  std::ostringstream elsewhere;
  std::streambuf* const previous = std::cout.rdbuf(elsewhere.rdbuf());
  const std::string directory = std::filesystem::current_path();
  HandlerTest test(WEBAPI_HANDLER_FILES);
  const HandlerAnswer answer = test.User("ada").Call(kPermission, 1, "who");
  std::cout.rdbuf(previous);
  EXPECT_TRUE(answer.Success()) << answer.Text();
  EXPECT_EQ(elsewhere.str(), "");
  EXPECT_EQ(std::filesystem::current_path(), directory);
  for (const char* name : {"WEBAPI_ROOT", "ORBO_WEBAPI_USERNAME", "HTTP_COOKIE"}) {
    EXPECT_EQ(std::getenv(name), nullptr) << name;
  }
}

TEST(HandlerTest, TellsWhatTheSystemLogHas) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(HandlerTest(WEBAPI_HANDLER_FILES).Call("ORBO.Test.Missing", 1, "echo").Code(), 111);
  EXPECT_NE(testing::internal::GetCapturedStderr().find("cannot open library: handlers/absent.so"),
            std::string::npos);
}

// Starts a background task that lasts until the file "go" is there.
void StartWork(HandlerTest& test) {
  EXPECT_TRUE(test.User("ada").Call(kPermission, 1, "work").Success());
}

TEST(HandlerTest, EndsAndRemovesEverything) {
  std::string ended = testing::TempDir() + "webapi-path-XXXXXX";
  const int file = mkstemp(ended.data());
  const pid_t child = fork();
  if (child == 0) {
    HandlerTest test(WEBAPI_HANDLER_FILES);
    StartWork(test);
    const std::string path = test.Path("");
    _exit(write(file, path.data(), path.size()) > 0 ? 0 : 1);
  }
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  char path[4096] = {};
  EXPECT_GT(pread(file, path, sizeof path - 1, 0), 0);
  close(file);
  std::filesystem::remove(ended);
  for (int i = 0; i < 1000 && std::filesystem::exists(path); ++i) {
    usleep(10000);
  }
  EXPECT_FALSE(std::filesystem::exists(path)) << "though its process has ended early";

  std::string root;
  {
    HandlerTest test(WEBAPI_HANDLER_FILES);
    HandlerTest other(WEBAPI_HANDLER_FILES);
    root = test.Path("");
    if (fork() == 0) {
      test.~HandlerTest();
      _exit(0);
    }
    wait(nullptr);
    StartWork(test);
    EXPECT_FALSE(test.WaitForEnd(0));
    EXPECT_TRUE(test.WriteFile("/go", "").WaitForEnd(20));
    StartWork(other);
  }
  EXPECT_FALSE(std::filesystem::exists(root));
}

}  // namespace
