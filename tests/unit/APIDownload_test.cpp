#include <gtest/gtest.h>
#include <webapi/APIDownload.h>
#include <webapi/APIResponse.h>

#include <cerrno>
#include <cstdlib>
#include <iostream>

#include "unit/LogCapture.h"
#include "unit/WebAPIDirectory.h"
#include "unit/json.h"
#include "util/StreamGuard.h"

namespace ORBO {
namespace {

constexpr char kJsonType[] = "application/json; charset=\"UTF-8\"";

std::string Answer(APIDownload& download, const std::string& path, int result = 0) {
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(result, download.Output(path));
  return ::testing::internal::GetCapturedStdout();
}

TEST(APIDownload, SendsTheResponsesHeadersFirstAndOneType) {
  const WebAPIDirectory directory;
  directory.Write("a.txt", "text");
  const std::tuple<std::string, std::string, const char*> rows[] = {
      {"{}", "", "Content-type: text/plain\r\n"},
      {"{}", "a/b", "Content-type: a/b\r\n"},
      {R"({"Content-type":"x/y"})", "a/b", "Content-type: x/y\r\n"},
      {R"({"Content-Type":"x/y"})", "a/b", "Content-Type: x/y\r\n"},
      {R"({"X-A":"1","X-B":2,"A":"0"})", "", "A: 0\r\nContent-type: text/plain\r\nX-A: 1\r\n"},
      {R"({"X-A":"1\r\nInjected: 1"})", "", "Content-type: text/plain\r\n"},
      {"{}", "a/b\r\nInjected: 1", "Content-Type: application/octet-stream\r\n"},
      {R"({"Status":"404"})", "", "Content-type: text/plain\r\nStatus: 404\r\n"},
  };
  for (const auto& [headers, mime_type, expected] : rows) {
    SCOPED_TRACE(headers + mime_type);
    const LogCapture log;
    APIResponse response(nullptr);
    APIDownload download(&response);
    download.SetMimeType(mime_type);
    EXPECT_TRUE(download.SetHeader(FromText(headers)));
    setenv("REQUEST_METHOD", "GET", 1);
    setenv("HTTP_IF_NONE_MATCH", headers.find("Status") == 2 ? "*" : "", 1);
    const std::string answer = Answer(download, "a.txt");
    unsetenv("HTTP_IF_NONE_MATCH");
    unsetenv("REQUEST_METHOD");
    const std::string added =
        "X-Content-Type-Options: nosniff\r\nCache-Control: private, no-cache\r\nETag: ";
    EXPECT_EQ(0U, answer.find(expected + added)) << answer;
    EXPECT_EQ("\r\n\r\ntext", answer.substr(answer.size() - 8));
  }
}

TEST(APIDownload, LeavesNoTraceOfAFailure) {
  const WebAPIDirectory directory;
  directory.Write("a.txt", "text");
  const LogCapture log;
  APIResponse response(nullptr);
  APIDownload download(&response);
  EXPECT_EQ("", Answer(download, "none.png", -ENOENT));
  EXPECT_EQ("", Answer(download, std::string("a.txt\0.png", 10), -EINVAL));
  {
    const StreamGuard guard(std::cout);
    EXPECT_EQ("", Answer(download, "a.txt", -EPERM));
  }
  EXPECT_EQ(kJsonType, response.GetHeader("Content-type", ""));
  EXPECT_TRUE(response.IsEnableOutput());
  EXPECT_NE("", Answer(download, "a.txt"));
  EXPECT_EQ("image/png", response.GetHeader("Content-type", "")) << "decided once";
  EXPECT_FALSE(response.IsEnableOutput());
}

TEST(APIDownload, WorksWithItsOwnResponseAndWithNone) {
  const WebAPIDirectory directory;
  directory.Write("a.txt", "text");
  APIDownload own;
  own.SetMimeTypeFromFileName("x.css");
  EXPECT_EQ(0U, Answer(own, "a.txt").find("Content-type: text/css\r\n"));
  APIDownload none(nullptr);
  EXPECT_FALSE(none.SetHeader("X", "x"));
  EXPECT_FALSE(none.SetHeader(FromText(R"({"X":"x"})")));
  EXPECT_TRUE(none.SetHeader(FromText(R"({"X":1})")));
  EXPECT_EQ(0U, Answer(none, "a.txt").find("Content-Type: text/plain\r\n"));
}

TEST(APIDownload, NamesAttachmentsInEveryScript) {
  const std::pair<std::string, const char*> rows[] = {
      {"a b.txt", R"(attachment; filename="a b.txt")"},
      {"a\"b.txt", R"(attachment; filename="a_b.txt"; filename*=UTF-8''a%22b.txt)"},
      {"50%41.txt", R"(attachment; filename="50_41.txt"; filename*=UTF-8''50%2541.txt)"},
      {"n\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80.txt",
       R"(attachment; filename="n___.txt"; filename*=UTF-8''n%C3%A4%E2%82%AC%F0%9F%98%80.txt)"},
      {"../a\\b", R"(attachment; filename=".._a_b")"},
      {std::string("a\r\nX: y\0\x7F\xC2\x85z", 12), R"(attachment; filename="a__X: y___z")"},
      {"\xFF\xC3(\xE2\x82", R"(attachment; filename="__(_")"},
  };
  for (const auto& [name, expected] : rows) {
    APIResponse response(nullptr);
    EXPECT_TRUE(APIDownload(&response).SetAttachment(name));
    EXPECT_EQ(expected, response.GetHeader("Content-Disposition", ""));
  }
  EXPECT_FALSE(APIDownload().SetAttachment(""));
  EXPECT_FALSE(APIDownload().SetAttachment(std::string(1025, 'x')));
}

}  // namespace
}  // namespace ORBO
