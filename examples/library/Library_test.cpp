#include <gtest/gtest.h>
#include <webapi/testing/HandlerTest.h>

namespace {

const struct {
  const char* method;
  const char* request;
  int status;
  const char* expected;
} kRows[] = {
    {"list", R"({"params": {"offset": 3, "limit": 100}})", 200,
     R"({"data":{"books":[{"author":"Robert Louis Stevenson","id":4,"title":"Kidnapped"}],"total":4},"success":true})"},
    {"list", R"({"params": {"limit": 0}})", 200,
     R"({"error":{"code":1001,"errors":{"parameter":"limit"}},"success":false})"},
    {"get", R"({"params": {"id": 2}})", 200,
     R"({"data":{"author":"George Eliot","id":2,"title":"Middlemarch"},"success":true})"},
    {"get", R"({"params": {"id": 9}})", 404, R"({"error":{"code":1002},"success":false})"},
    {"lend", R"({"params": {"id": 2}})", 405, R"({"error":{"code":1003},"success":false})"},
    {"lend", R"({"params": {"id": 2}, "httpMethod": "POST"})", 202,
     R"({"data":{"author":"George Eliot","id":2,"title":"Middlemarch"},"success":true})"},
};

TEST(Library, ChecksBeforeItAnswers) {
  for (const auto& row : kRows) {
    ORBO::HandlerTest test(WEBAPI_HANDLER_FILES);
    const ORBO::HandlerAnswer answer =
        test.Request(row.request).Call("ORBO.Example.Library", 1, row.method);
    EXPECT_EQ(answer.Text(), row.expected);
    EXPECT_EQ(answer.Status(), row.status) << row.method;
  }
}

}  // namespace
