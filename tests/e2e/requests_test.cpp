// What a well-meant request gets, and the code for each way to ask for what is
// not there.

#include "server_test.h"

namespace e2e {

namespace {

class Requests : public ServerTest {};
E2E_UNDER_EVERY_SERVER(Requests);

std::string EchoOf(const std::string& api, const std::string& version = "1") {
  return "api=" + api + "&version=" + version + "&method=echo";
}

TEST_P(Requests, GetTheDefinedAnswer) {
  const std::string compound = "api=ORBO.Entry.Request&version=1&method=request";
  const struct {
    std::string query;
    const char* form;  // null: a GET request
    std::string expected;
  } rows[] = {
      {Probe("echo", "n=10&s=" + Escape("\"10\"") + "&t=abc&z=null&b=true"), nullptr,
       Success(R"({"b":true,"n":10,"s":"10","t":"abc","z":null})")},
      {Probe("echo"), R"(n=-7&r=1.5&a=[1,"x"]&o={"k":[]}&t=plain text)",
       Success(R"({"a":[1,"x"],"n":-7,"o":{"k":[]},"r":1.5,"t":"plain text"})")},
      {Probe("echo", "t=a+b%2Bc%zz&t%31=%C3%A4&n=1&n=2&&=&x"), nullptr,
       Success("{\"\":\"\",\"n\":2,\"t\":\"a b+c%zz\",\"t1\":\"\xC3\xA4\",\"x\":\"\"}")},
      {Probe("echo", "m=1&n=1"), "n=2", Success(R"({"m":1,"n":2})")},
      {Probe("throws"), "method=echo", Success("{}")},
      {EchoOf("ORBO.Test.Open"), nullptr, Success("{}")},
      {"", nullptr, Failure(101)},
      {"", "version=1&method=echo", Failure(101)},
      {Probe("echo"), "", Failure(101)},
      // The last of a name counts.
      {Probe("echo"), "api=[\"ORBO.Test.Probe\"]", Failure(101)},
      {Probe("echo"), "api=../outside", Failure(102)},
      {Probe("echo"), "api=handlers/outside", Failure(102)},
      {Probe("echo"), "api=ORBO.Test.Probe%00", Failure(102)},
      {Probe("echo"), "version=1.9", Success("{}")},
      {Probe("echo"), "version=4294967297", Failure(101)},
      {Probe("echo"), "method=null", Failure(101)},
      {Probe("echo"), "method=ec%0D%0Aho", Failure(103)},
      {EchoOf("ORBO.Nowhere.Probe"), nullptr, Failure(102)},
      {EchoOf("ORBO.Test.Probe", "4"), nullptr, Failure(104)},
      {EchoOf("ORBO.Test.Probe", "3"), nullptr, Failure(121)},
      {Probe("unlisted"), nullptr, Failure(121)},
      {EchoOf("ORBO.Test.Missing"), nullptr, Failure(111)},
      {compound, nullptr, Failure(110)},
      {compound,
       R"(compound=[{"api":"ORBO.Test.Probe","version":1,"method":"echo","n":1},)"
       R"({"api":"ORBO.Test.Closed","version":1,"method":"echo"}])",
       Success(R"({"has_fail":true,"result":[{"api":"ORBO.Test.Probe","data":{"n":1},)"
               R"("method":"echo","success":true,"version":1},{"api":"ORBO.Test.Closed",)"
               R"("error":{"code":119},"method":"echo","success":false,"version":1}]})")},
      {EchoOf("ORBO.Test.Closed"), nullptr, Failure(119)},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.query);
    const HttpResponse response =
        row.form == nullptr ? server().Get(row.query) : server().Post(row.query, row.form);
    EXPECT_EQ(response.status, 200);
    EXPECT_EQ(response.body, row.expected);
  }
  const HttpResponse head = server().Send("HEAD", "/webapi/entry.cgi?" + Probe("echo"));
  EXPECT_EQ(head.status, 200);
  EXPECT_EQ(head.body, "");
  EXPECT_EQ(head.Headers("Content-type").size(), 1U);
}

TEST_P(Requests, AreCountedWhereTheOwnerSharesUsageData) {
  const std::string setting = server().root().path() + "/etc/orboinfo.conf";
  const std::string spool = server().root().path() + "/var/spool/webapi";
  fs::create_directories(fs::path(setting).parent_path());
  fs::create_directories(fs::path(spool).parent_path());
  server().root().HandOver();
  for (const char* value : {"no", "\"yes\""}) {
    EXPECT_FALSE(fs::exists(spool));
    std::ofstream(setting) << "join_user_data_collect = " << value << "\n";
    for (const std::string& query : {Probe("echo"), Probe("echo"), Probe("header"), Probe("none"),
                                     EchoOf("ORBO.Test.Open"), EchoOf("ORBO.Test.Closed")}) {
      server().Get(query);
    }
  }
  fs::remove(setting);
  // With lock, draft and time stamp, and nothing of the others.
  EXPECT_EQ(std::distance(fs::directory_iterator(spool), {}), 4);
  const std::string counters = ReadFile(spool + "/ORBO.Test.Probe.json");
  EXPECT_EQ(counters.substr(0, 39), R"({"ORBO.Test.Probe_1_echo":{"count":2,"c)");
  EXPECT_EQ(counters.find("header"), std::string::npos);
}

}  // namespace

}  // namespace e2e
