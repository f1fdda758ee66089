#include <webapi/WebEntry.h>

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <fstream>

#include "entry/auth_level.h"
#include "entry/http_header.h"
#include "entry/session_cookie.h"
#include "unit/WebAPIDirectory.h"
#include "unit/json.h"
#include "util/read_file.h"

namespace ORBO {
namespace {

constexpr char kCacheLines[] =
    "Cache-Control: max-age=0, no-cache, no-store, must-revalidate\r\n"
    "Pragma: no-cache\r\n"
    "Expires: 0\r\n"
    "\r\n";

TEST(HttpHeader, HeadersCookiesAndCacheLinesInOrder) {
  EXPECT_EQ(std::string("Status: 302\r\nx-a: 1\r\n"
                        "Set-Cookie: a=1; path=/\r\nset-cookie: b=2\r\n") +
                kCacheLines,
            FormatHeaderBlock(FromText(R"({"x-a":"1","Status":"302","number":5})"),
                              FromText(R"(["a=1; path=/", 7, "set-cookie: b=2"])")));
}

TEST(SessionCookie, TakesThePlaceOfAnEarlierOne) {
  EXPECT_EQ("id=S", WithSessionCookie("", "S"));
  EXPECT_EQ("lang=en; abandoned=OLD; id=S", WithSessionCookie("lang=en; id=OLD", "S"));
  EXPECT_EQ("grabandoned=1; id=OLD; id=S", WithSessionCookie("grid=1; id=OLD", "S"));
}

TEST(AuthLevel, OnlyZeroAndTwoOpen) {
  EXPECT_EQ(AuthLevel::kNone, ToAuthLevel(FromText("0")));
  EXPECT_EQ(AuthLevel::kOptional, ToAuthLevel(FromText("2")));
  for (const char* value : {"1", "3", "-1", "null", "\"0\"", "false", "0.0", "[]", "4294967296",
                            "18446744073709551615"}) {
    EXPECT_EQ(AuthLevel::kRequired, ToAuthLevel(FromText(value))) << value;
  }
}

void WriteMarker(void* text) {
  std::ofstream("marker", std::ios::app) << static_cast<const char*>(text);
}

void ThrowSomething(void* /*argument*/) { throw 1; }

TEST(WebEntry, CallbacksRunOnceInADetachedProcess) {
  const WebAPIDirectory directory;
  char first[] = "first ";
  char second[] = "second";
  APIResponse response(nullptr);
  WebEntry entry;
  EXPECT_EQ(0, entry.HandleCallback(nullptr));
  EXPECT_EQ(0, entry.HandleCallback(&response));
  response.SetCallbackFunc(WriteMarker, first);
  response.SetCallbackFunc(ThrowSomething, nullptr);
  response.SetCallbackFunc(WriteMarker, second);
  response.SetCallbackFunc(WriteMarker, first);
  response.SetCallbackFunc(nullptr, first);
  APIResponse outer(nullptr);
  outer.SetCallbackFuncs(response.GetCallbackFuncs());
  const pid_t child = entry.HandleCallback(&outer);
  ASSERT_GT(child, 0);
  int status = -1;
  EXPECT_EQ(child, waitpid(child, &status, 0));
  EXPECT_EQ(0, status);
  std::string text;
  EXPECT_TRUE(ReadWholeFile("marker", text));
  EXPECT_EQ("first second", text);
}

}  // namespace
}  // namespace ORBO
