#include <webapi/WebEntry.h>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <sstream>

#include "entry/auth_level.h"
#include "entry/http_header.h"
#include "entry/session_cookie.h"
#include "unit/LogCapture.h"
#include "unit/WebAPIDirectory.h"
#include "unit/fake_confinement.h"
#include "unit/json.h"

namespace ORBO {
namespace {

TEST(HttpHeader, HeadersCookiesAndCacheLinesInOrder) {
  EXPECT_EQ(
      "Status: 302\r\n"
      "x-a: 1\r\n"
      "Set-Cookie: a=1; path=/\r\n"
      "set-cookie: b=2\r\n"
      "Cache-Control: max-age=0, no-cache, no-store, must-revalidate\r\n"
      "Pragma: no-cache\r\n"
      "Expires: 0\r\n"
      "\r\n",
      FormatHeaderBlock(FromText(R"({"x-a":"1","Status":"302","number":5})"),
                        FromText(R"(["a=1; path=/", 7, "set-cookie: b=2"])")));
}

TEST(HttpHeader, WhatBreaksALineIsLeftOut) {
  const std::string plain = FormatHeaderBlock(FromText("{}"), FromText("[]"));
  for (const char* header : {R"({"a":"x\r\nInjected: 1"})", R"({"a":"x\ny"})", R"({"a":"x\ry"})",
                             R"({"a":"x\u0000y"})", R"({"a\r\nb":"x"})", R"({"a\u0000b":"x"})"}) {
    SCOPED_TRACE(header);
    LogCapture log;
    EXPECT_EQ(plain, FormatHeaderBlock(FromText(header), FromText("[]")));
    EXPECT_EQ(1U, log.lines().size());
  }
  LogCapture log;
  EXPECT_EQ(plain, FormatHeaderBlock(FromText("{}"), FromText(R"(["a=1\r\nInjected: 1"])")));
  EXPECT_EQ(1U, log.lines().size());
}

TEST(SessionCookie, TakesThePlaceOfAnEarlierOne) {
  const struct {
    const char* line;
    const char* expected;
  } rows[] = {
      {"", "id=S"},
      {"lang=en; id=OLD", "lang=en; abandoned=OLD; id=S"},
      {"lang=en", "lang=en; id=S"},
      {"grid=1; id=OLD", "grabandoned=1; id=OLD; id=S"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.line);
    EXPECT_EQ(row.expected, WithSessionCookie(row.line, "S"));
  }
}

TEST(AuthLevel, OnlyZeroAndTwoOpen) {
  EXPECT_EQ(AuthLevel::kNone, ToAuthLevel(FromText("0")));
  EXPECT_EQ(AuthLevel::kOptional, ToAuthLevel(FromText("2")));
  for (const char* value : {"1", "3", "-1", "null", "\"0\"", "\"none\"", "false", "0.0", "[]",
                            "4294967296", "18446744073709551615"}) {
    SCOPED_TRACE(value);
    EXPECT_EQ(AuthLevel::kRequired, ToAuthLevel(FromText(value)));
  }
}

// Runs an entry in this process on a CGI environment of its own.
class Entry : public testing::Test {
 protected:
  void SetUp() override {
    FakeConfinement::Get() = FakeConfinement();
    directory_.Write("lib.def", R"({"methods":{}})");
    directory_.Write("ORBO.Test.lib", R"({"ORBO.Test.Good":{"lib":")" + TestModule("good") +
                                          R"(","minVersion":1,"maxVersion":1,"authLevel":0,
                            "methods":{"1":["echo",{"open":{"allowUpload":true}}]}},
                         "ORBO.Test.Closed":{"lib":"none","minVersion":1,"maxVersion":1,
                            "methods":{"1":["get"]}}})");
  }
  void TearDown() override {
    for (const char* name : {"REQUEST_METHOD", "QUERY_STRING", "HTTP_COOKIE", "CONTENT_LENGTH",
                             "CONTENT_TYPE", "orboAccessToken"}) {
      unsetenv(name);
    }
    FakeConfinement::Get() = FakeConfinement();
  }

  // The whole output of one run.
  static std::string Run(WebEntry& entry) {
    std::ostringstream output;
    std::streambuf* const previous = std::cout.rdbuf(output.rdbuf());
    entry.Run(Json::Value());
    std::cout.rdbuf(previous);
    return output.str();
  }

  static std::string RunGet(const std::string& query) {
    setenv("REQUEST_METHOD", "GET", 1);
    setenv("QUERY_STRING", query.c_str(), 1);
    WebEntry entry;
    return Run(entry);
  }

  static std::string BodyOf(const std::string& output) {
    const std::size_t end = output.find("\r\n\r\n");
    return end == std::string::npos ? "no header block" : output.substr(end + 4);
  }

  WebAPIDirectory directory_;
};

constexpr char kEcho[] = "api=ORBO.Test.Good&version=1&method=echo";

TEST_F(Entry, WritesHeadersAndBody) {
  EXPECT_EQ(
      "Content-type: application/json; charset=\"UTF-8\"\r\n"
      "Cache-Control: max-age=0, no-cache, no-store, must-revalidate\r\n"
      "Pragma: no-cache\r\n"
      "Expires: 0\r\n"
      "\r\n"
      "{\"data\":[1,\"b c\"],\"success\":true}\n",
      RunGet(std::string(kEcho) + "&value=%5B1,%22b+c%22%5D"));
}

TEST_F(Entry, IsClosedWithoutSessions) {
  const std::string output = RunGet("api=ORBO.Test.Closed&version=1&method=get");
  EXPECT_NE(std::string::npos, output.find("x-request-error: unauth\r\n"));
  EXPECT_EQ("{\"error\":{\"code\":119},\"success\":false}\n", BodyOf(output));
}

TEST_F(Entry, SessionIdAndTokenReachTheEnvironment) {
  const auto environment = [](const char* name) {
    const char* value = std::getenv(name);
    return std::string(value == nullptr ? "unset" : value);
  };
  RunGet(kEcho);
  EXPECT_EQ("unset", environment("HTTP_COOKIE"));
  RunGet(std::string(kEcho) + "&tid=T");
  EXPECT_EQ("unset", environment("HTTP_COOKIE"));
  EXPECT_EQ("T", environment("orboAccessToken"));
  setenv("HTTP_COOKIE", "lang=en; id=OLD", 1);
  RunGet(std::string(kEcho) + "&_sid=S&tid=U");
  EXPECT_EQ("lang=en; abandoned=OLD; id=S", environment("HTTP_COOKIE"));
  EXPECT_EQ("T", environment("orboAccessToken"));
  unsetenv("HTTP_COOKIE");
  RunGet(std::string(kEcho) + "&_sid=null");
  EXPECT_EQ("id=", environment("HTTP_COOKIE"));
}

TEST_F(Entry, UploadsAreRefused) {
  setenv("REQUEST_METHOD", "POST", 1);
  setenv("CONTENT_TYPE", "multipart/form-data; boundary=x", 1);
  setenv("CONTENT_LENGTH", "10", 1);
  setenv("QUERY_STRING", "api=ORBO.Test.Good&version=1&method=open", 1);
  WebEntry entry;
  const std::string output = Run(entry);
  EXPECT_NE(std::string::npos, output.find("Content-type: text/html; charset=\"UTF-8\"\r\n"));
  EXPECT_EQ("{\"error\":{\"code\":108,\"errors\":{\"upload_err\":-8}},\"success\":false}\n",
            BodyOf(output));
}

std::string g_marker;

void WriteMarker(void* argument) {
  std::FILE* file = std::fopen(g_marker.c_str(), "a");
  std::fputs(static_cast<const char*>(argument), file);
  std::fclose(file);
}

void ThrowSomething(void* /*argument*/) { throw 1; }

TEST_F(Entry, CallbacksRunInADetachedProcess) {
  g_marker = std::filesystem::current_path() / "marker";
  char first[] = "first ";
  char second[] = "second";
  APIResponse response(nullptr);
  WebEntry entry;
  EXPECT_EQ(0, entry.HandleCallback(nullptr));
  EXPECT_EQ(0, entry.HandleCallback(&response));
  response.SetCallbackFunc(WriteMarker, first);
  response.SetCallbackFunc(ThrowSomething, nullptr);
  response.SetCallbackFunc(WriteMarker, second);
  const pid_t child = entry.HandleCallback(&response);
  ASSERT_GT(child, 0);
  int status = -1;
  EXPECT_EQ(child, waitpid(child, &status, 0));
  EXPECT_EQ(0, status);
  std::string text(std::filesystem::file_size(g_marker), '\0');
  std::FILE* file = std::fopen(g_marker.c_str(), "r");
  EXPECT_EQ(text.size(), std::fread(text.data(), 1, text.size(), file));
  std::fclose(file);
  EXPECT_EQ("first second", text);
}

}  // namespace
}  // namespace ORBO
