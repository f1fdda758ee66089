// The examples do what their comments and the documentation say.

#include "server_test.h"

namespace e2e {

namespace {

class Examples : public ServerTest {};
E2E_UNDER_EVERY_SERVER(Examples);

std::string Refused(const std::string& parameter) {
  return R"({"error":{"code":1001,"errors":{"parameter":")" + parameter +
         "\"}},\"success\":false}\n";
}

TEST_P(Examples, Answer) {
  const std::string hello1 = "api=ORBO.Example.Greeting&version=1&method=hello";
  const std::string hello2 = "api=ORBO.Example.Greeting&version=2&method=hello";
  const std::string library = "api=ORBO.Example.Library&version=1&method=";
  const std::string middlemarch = R"({"author":"George Eliot","id":2,"title":"Middlemarch"})";
  const std::string kidnapped = R"({"author":"Robert Louis Stevenson","id":4,"title":"Kidnapped"})";
  const struct {
    std::string call;
    int status;
    std::string expected;
  } rows[] = {
      {hello1, 200, Success(R"({"text":"Hello, world!"})")},
      {hello1 + "&name=5", 200, Refused("name")},
      {hello2 + "&language=de&times=2", 200,
       Success(R"({"lines":["Hallo, world!","Hallo, world!"]})")},
      {hello2 + "&language=xx", 200, Refused("language")},
      {"api=ORBO.Example.Greeting&version=2&method=card", 200, "Hello, world!\n"},
      {"api=ORBO.Example.Greeting.Visitor&version=1&method=hello", 200,
       Success(R"({"text":"Hello, stranger!"})")},
      {"api=ORBO.Example.Greeting.Member&version=1&method=hello", 200, Failure(119)},
      {library + "list&offset=3&limit=100", 200,
       Success(R"({"books":[)" + kidnapped + R"(],"total":4})")},
      {library + "list&limit=0", 200, Refused("limit")},
      {library + "get&id=2", 200, Success(middlemarch)},
      {library + "get&id=9", 404, Failure(1002)},
      {library + "lend&id=2", 405, Failure(1003)},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.call);
    const HttpResponse response = server().Get(row.call);
    EXPECT_EQ(response.status, row.status);
    EXPECT_EQ(response.body, row.expected);
  }
  const HttpResponse lent = server().Post("", library + "lend&id=2");
  EXPECT_EQ(lent.status, 202);
  EXPECT_EQ(lent.body, Success(middlemarch));
}

TEST_P(Examples, RememberANameInACookie) {
  const std::string greeting = "api=ORBO.Example.Greeting&version=2&method=";
  const HttpResponse response = server().Post("", greeting + "remember&name=Ada L");
  EXPECT_EQ(response.status, 302);
  ASSERT_EQ(response.Headers("Set-Cookie"),
            std::vector<std::string>{"greeting_name=Ada%20L; path=/"});
  ASSERT_EQ(response.Headers("Location"),
            std::vector<std::string>{"http://" + server().Host() + "/webapi/entry.cgi?" + greeting +
                                     "hello"});
  EXPECT_EQ(server().Get(greeting + "hello", {"Cookie: greeting_name=Ada%20L"}).body,
            Success(R"({"lines":["Hello, Ada L!"]})"));
}

}  // namespace

}  // namespace e2e
