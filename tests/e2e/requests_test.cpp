// What a well-meant request gets, and the code for each way to ask for what is
// not there.

#include "server_test.h"

namespace e2e {

namespace {

class Requests : public ServerTest {};
E2E_UNDER_EVERY_SERVER(Requests);

struct Row {
  const char* name;
  std::string query;
  const char* form;  // null: a GET request
  std::string expected;
};

std::vector<Row> Answered() {
  return {
      {"no parameters", Probe("echo"), nullptr, Success("{}")},
      {"typed query", Probe("echo", "n=10&s=" + Escape("\"10\"") + "&t=abc&z=null&b=true"), nullptr,
       Success(R"({"b":true,"n":10,"s":"10","t":"abc","z":null})")},
      {"typed form", Probe("echo"), R"(n=-7&r=1.5&a=[1,"x"]&o={"k":[]}&t=plain text)",
       Success(R"({"a":[1,"x"],"n":-7,"o":{"k":[]},"r":1.5,"t":"plain text"})")},
      {"escapes", Probe("echo", "t=a+b%2Bc%zz&t%31=%C3%A4"), nullptr,
       Success("{\"t\":\"a b+c%zz\",\"t1\":\"\xC3\xA4\"}")},
      {"last of a name wins", Probe("echo", "n=1&n=2&&=&x"), nullptr,
       Success(R"({"":"","n":2,"x":""})")},
      {"form wins over query", Probe("echo", "m=1&n=1"), "n=2", Success(R"({"m":1,"n":2})")},
      {"the whole call in the form", "", "api=ORBO.Test.Probe&version=1&method=echo&n=3",
       Success(R"({"n":3})")},
      {"the form's method wins", Probe("nothing"), "method=echo", Success("{}")},
      {"quoted names", "api=%22ORBO.Test.Probe%22&version=%221%22&method=%22echo%22", nullptr,
       Success("{}")},
      {"session check failed and ignored", "api=ORBO.Test.Open&version=1&method=echo", nullptr,
       Success("{}")},
  };
}

std::vector<Row> Refused() {
  return {
      {"no parameters at all", "", nullptr, Failure(101)},
      {"no API", "version=1&method=echo", nullptr, Failure(101)},
      {"no version", "api=ORBO.Test.Probe&method=echo", nullptr, Failure(101)},
      {"no method", "api=ORBO.Test.Probe&version=1", nullptr, Failure(101)},
      {"version 0", "api=ORBO.Test.Probe&version=0&method=echo", nullptr, Failure(101)},
      {"empty form", Probe("echo"), "", Failure(101)},
      {"API without a file", "api=ORBO.Nowhere.Probe&version=1&method=echo", nullptr, Failure(102)},
      {"API not in its file", "api=ORBO.Test.Absent&version=1&method=echo", nullptr, Failure(102)},
      {"version above the range", "api=ORBO.Test.Probe&version=4&method=echo", nullptr,
       Failure(104)},
      {"version without methods", "api=ORBO.Test.Probe&version=2&method=echo", nullptr,
       Failure(103)},
      {"method not listed", Probe("absent"), nullptr, Failure(103)},
      {"method of another version", "api=ORBO.Test.Probe&version=3&method=size", nullptr,
       Failure(103)},
      {"method without a row", Probe("unlisted"), nullptr, Failure(121)},
      {"row of another version", "api=ORBO.Test.Probe&version=3&method=echo", nullptr,
       Failure(121)},
      {"library absent", "api=ORBO.Test.Missing&version=1&method=echo", nullptr, Failure(111)},
      {"library without a table", "api=ORBO.Test.NoTable&version=1&method=echo", nullptr,
       Failure(111)},
      {"no result", Probe("nothing"), nullptr, Failure(117)},
      {"handler throws", Probe("throws"), nullptr, Failure(117)},
      {"handler throws a number", Probe("throwsNumber"), nullptr, Failure(117)},
      {"relay", Probe("echo", "relay_ds=1"), nullptr, Failure(109)},
      {"built-in API without calls", "api=ORBO.Entry.Request&version=1&method=request", nullptr,
       Failure(110)},
      {"built-in API with no list of calls",
       "api=ORBO.Entry.Request&version=1&method=request&compound=5", nullptr, Failure(110)},
      {"built-in API with calls", "",
       "api=ORBO.Entry.Request&version=1&method=request&compound="
       R"([{"api":"ORBO.Test.Probe","version":1,"method":"echo"}])",
       Failure(110)},
      {"nobody logged in", "api=ORBO.Test.Closed&version=1&method=echo", nullptr, Failure(119)},
  };
}

TEST_P(Requests, GetTheDefinedAnswer) {
  for (const std::vector<Row>& rows : {Answered(), Refused()}) {
    for (const Row& row : rows) {
      SCOPED_TRACE(row.name);
      const HttpResponse response =
          row.form == nullptr ? server().Get(row.query) : server().Post(row.query, row.form);
      EXPECT_EQ(response.status, 200);
      EXPECT_EQ(response.body, row.expected);
    }
  }
}

TEST_P(Requests, HeadGetsTheHeadersOnly) {
  const HttpResponse response = server().Send("HEAD", "/webapi/entry.cgi?" + Probe("facts"));
  EXPECT_EQ(response.status, 200);
  EXPECT_EQ(response.body, "");
  EXPECT_EQ(response.Headers("Content-type").size(), 1U);
}

TEST_P(Requests, CarryCookiesAndTheURL) {
  const HttpResponse response = server().Get(
      Probe("facts"), {"Cookie: first=1; id=S; second=2%20x;flag", "X-Forwarded-Proto: HTTPS"});
  EXPECT_EQ(response.body,
            Success(R"({"cookies":"1,2 x","host":"127.0.0.1","method":1,"proto":"https",)"
                    R"("session":"S"})"));
  EXPECT_EQ(server().Post(Probe("facts"), "_sid=T").body,
            Success(R"({"cookies":"none,none","host":"127.0.0.1","method":2,"proto":"http",)"
                    R"("session":"T"})"));
}

TEST_P(Requests, UploadsNeedAMethodThatTakesThem) {
  const std::string part = "--b\r\nContent-Disposition: form-data; name=\"f\"; filename=\"a\"\r\n";
  auto upload = [&](const std::string& method, const std::string& body) {
    return server().Send("POST", "/webapi/entry.cgi?" + Probe(method),
                         {"Content-Type: multipart/form-data; boundary=b"}, body);
  };
  const HttpResponse refused = upload("echo", part + "\r\ncontent\r\n--b--\r\n");
  EXPECT_EQ(refused.body, Failure(115));
  // Browsers show the answer to an upload form, and may offer JSON for saving.
  EXPECT_EQ(refused.Headers("Content-type"),
            std::vector<std::string>{"text/html; charset=\"UTF-8\""});

  const HttpResponse cut_short = upload("upload", part + "\r\ncontent without an end");
  EXPECT_EQ(cut_short.body.rfind("{\"error\":{\"code\":108,\"errors\":{\"upload_err\":", 0), 0U)
      << cut_short.body;
}

}  // namespace

}  // namespace e2e
