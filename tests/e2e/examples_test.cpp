// The examples do what their comments and the documentation say.

#include "server_test.h"

namespace e2e {

namespace {

class Examples : public ServerTest {};
E2E_UNDER_EVERY_SERVER(Examples);

constexpr char kGreeting[] = "api=ORBO.Example.Greeting&version=";
constexpr char kLibrary[] = "api=ORBO.Example.Library&version=1&method=";
constexpr char kWalden[] = R"({"author":"Henry David Thoreau","id":1,"title":"Walden"})";
constexpr char kMiddlemarch[] = R"({"author":"George Eliot","id":2,"title":"Middlemarch"})";
constexpr char kKidnapped[] = R"({"author":"Robert Louis Stevenson","id":4,"title":"Kidnapped"})";

std::string Refused(int code, const std::string& parameter) {
  return "{\"error\":{\"code\":" + std::to_string(code) + ",\"errors\":{\"parameter\":\"" +
         parameter + "\"}},\"success\":false}\n";
}

TEST_P(Examples, Answer) {
  struct Row {
    const char* http_method;
    std::string call;
    int status;
    std::string expected;
  };
  const std::string greeting = kGreeting;
  const std::string library = kLibrary;
  const Row rows[] = {
      {"GET", greeting + "1&method=hello", 200, Success(R"({"text":"Hello, world!"})")},
      {"GET", greeting + "1&method=hello&name=Ada", 200, Success(R"({"text":"Hello, Ada!"})")},
      {"GET", greeting + "1&method=hello&name=5", 200, Refused(1001, "name")},
      {"GET", greeting + "2&method=hello&language=de&times=2", 200,
       Success(R"({"lines":["Hallo, world!","Hallo, world!"]})")},
      {"GET", greeting + "2&method=hello&times=11", 200, Refused(1001, "times")},
      {"GET", greeting + "2&method=hello&language=xx", 200, Refused(1001, "language")},
      {"GET", greeting + "1&method=card", 200, Failure(103)},
      {"GET", greeting + "2&method=card", 200, "Hello, world!\n"},
      {"GET", "api=ORBO.Example.Greeting.Visitor&version=1&method=hello", 200,
       Success(R"({"text":"Hello, stranger!"})")},
      {"GET", "api=ORBO.Example.Greeting.Member&version=1&method=hello", 200, Failure(119)},
      {"GET", library + "list", 200,
       Success(std::string(R"({"books":[)") + kWalden + "," + kMiddlemarch + R"(],"total":4})")},
      {"GET", library + "list&offset=3&limit=100", 200,
       Success(std::string(R"({"books":[)") + kKidnapped + R"(],"total":4})")},
      {"GET", library + "list&offset=2147483647", 200, Success(R"({"books":[],"total":4})")},
      {"GET", library + "list&limit=0", 200, Refused(1001, "limit")},
      {"GET", library + "get&id=2", 200, Success(kMiddlemarch)},
      {"GET", library + "get", 200, Refused(1001, "id")},
      {"GET", library + "get&id=9", 404, Failure(1002)},
      {"GET", library + "lend&id=2", 405, Failure(1003)},
      {"POST", library + "lend&id=2", 202, Success(kMiddlemarch)},
      {"POST", library + "lend&id=9", 404, Failure(1002)},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.call);
    const HttpResponse response = row.http_method == std::string("GET")
                                      ? server().Get(row.call)
                                      : server().Post("", row.call);
    EXPECT_EQ(response.status, row.status);
    EXPECT_EQ(response.body, row.expected);
  }
}

TEST_P(Examples, RememberANameInACookie) {
  const HttpResponse response =
      server().Post("", std::string(kGreeting) + "2&method=remember&name=Ada L");
  EXPECT_EQ(response.status, 302);
  ASSERT_EQ(response.Headers("Set-Cookie"),
            std::vector<std::string>{"greeting_name=Ada%20L; path=/"});
  const std::string base = "http://" + server().Host();
  ASSERT_EQ(response.Headers("Location"),
            std::vector<std::string>{base + "/webapi/entry.cgi?" + kGreeting + "2&method=hello"});
  const std::string target = response.Headers("Location")[0].substr(base.size());
  EXPECT_EQ(server().Send("GET", target, {"Cookie: greeting_name=Ada%20L"}).body,
            Success(R"({"lines":["Hello, Ada L!"]})"));
}

}  // namespace

}  // namespace e2e
