// Requests that nobody well-meaning sends: each gets a defined answer, and the
// next request is served as before.

#include <json/writer.h>

#include <chrono>
#include <thread>

#include "server_test.h"

namespace e2e {

namespace {

class HostileRequests : public ServerTest {
 protected:
  // A name of the call replaced by another JSON text.
  static HttpResponse CallWith(const std::string& name, const std::string& value) {
    std::string form;
    for (const auto& [key, usual] : std::map<std::string, std::string>{
             {"api", "ORBO.Test.Probe"}, {"version", "1"}, {"method", "echo"}}) {
      form += key + "=" + (key == name ? Escape(value) : usual) + "&";
    }
    return server().Post("", form);
  }

  void TearDown() override { EXPECT_EQ(server().Get(Probe("echo")).body, Success("{}")); }
};
E2E_UNDER_EVERY_SERVER(HostileRequests);

TEST_P(HostileRequests, NamesOfEveryJSONTypeAreCodesAndNothingElse) {
  const std::string long_name(10000, 'x');
  struct Row {
    const char* name;
    std::string value;
    std::string expected;
  };
  const std::vector<Row> rows = {
      {"api", "null", Failure(101)},
      {"api", "7", Failure(102)},
      {"api", "-1.5", Failure(102)},
      {"api", "true", Failure(102)},
      {"api", "[\"ORBO.Test.Probe\"]", Failure(101)},
      {"api", "{\"ORBO.Test.Probe\":1}", Failure(101)},
      {"api", long_name, Failure(102)},
      {"api", "ORBO.Test.Probe" + std::string(1, '\0'), Failure(102)},
      {"api", "\"ORBO.Test.Probe\\u0000\"", Failure(102)},
      {"api", "../outside", Failure(102)},
      {"api", "handlers/outside", Failure(102)},
      {"api", "..", Failure(102)},
      {"api", "...", Failure(102)},
      {"api", "/etc/passwd", Failure(102)},
      {"api", "ORBO.Test.Probe%s%n", Failure(102)},
      {"version", "null", Failure(101)},
      {"version", "true", Success("{}")},
      {"version", "1.9", Success("{}")},
      {"version", "\"1\"", Success("{}")},
      {"version", "-1", Failure(101)},
      {"version", "4294967297", Failure(101)},
      {"version", "18446744073709551617", Failure(101)},
      {"version", "1e300", Failure(101)},
      {"version", "1e999", Failure(101)},
      {"version", "one", Failure(101)},
      {"version", "[1]", Failure(101)},
      {"version", "{\"1\":1}", Failure(101)},
      {"version", "2147483647", Failure(104)},
      {"method", "null", Failure(101)},
      {"method", "7", Failure(103)},
      {"method", "false", Failure(103)},
      {"method", "[\"echo\"]", Failure(101)},
      {"method", "{}", Failure(101)},
      {"method", long_name, Failure(103)},
      {"method", std::string("echo\0", 5), Failure(103)},
      {"method", "ec%0D%0Aho", Failure(103)},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.name) + "=" + row.value.substr(0, 40));
    const HttpResponse response = CallWith(row.name, row.value);
    EXPECT_EQ(response.status, 200);
    EXPECT_EQ(response.body, row.expected);
  }
}

TEST_P(HostileRequests, ValuesThatAreAlmostJSONStayText) {
  for (const std::string value :
       {"[1,", "[1,]", "{\"a\":1,}", "{'a':1}", "012", "5.", "-", "+1", "0x10", "tru", "True",
        "NaN", "Infinity", "1]", "[1]x", "//", "[1]/**/", "\\", "."}) {
    SCOPED_TRACE(value);
    const std::string quoted = Json::valueToQuotedString(value.c_str());
    EXPECT_EQ(server().Post(Probe("echo"), "v=" + Escape(value)).body,
              Success("{\"v\":" + quoted + "}"));
  }
  EXPECT_EQ(server().Post(Probe("echo"), "v=%00x").body, Success(R"({"v":"\u0000x"})"));
  EXPECT_EQ(server().Post(Probe("echo"), "v=\"open").body, Success(R"({"v":"\"open"})"));
  // Whatever stands for a broken byte, the answer is UTF-8.
  EXPECT_EQ(server().Post(Probe("echo"), "v=%FF").body.find('\xFF'), std::string::npos);
}

TEST_P(HostileRequests, DeepNestingIsTextLikeAnyOther) {
  const std::string deep = std::string(100000, '[') + std::string(100000, ']');
  EXPECT_EQ(server().Post(Probe("size"), "v=" + deep).body, Success("200000"));
  EXPECT_EQ(server().Post("", "version=1&method=echo&api=" + deep).body, Failure(102));
}

TEST_P(HostileRequests, BodiesAreTakenUpToALimit) {
  const std::string megabyte(1 << 20, 'x');
  EXPECT_EQ(server().Post(Probe("size"), "v=" + megabyte).body, Success("1048576"));
  EXPECT_EQ(server().Post(Probe("size"), "v=" + std::string(17 << 20, 'x')).body, Failure(101));
}

TEST_P(HostileRequests, TheServerOrTheProgramAnswersWhatTheServerMayRefuse) {
  const std::string megabyte(1 << 20, 'x');
  const std::string line = "POST /webapi/entry.cgi?" + Probe("size") +
                           " HTTP/1.1\r\nHost: " + server().Host() + "\r\nConnection: close\r\n";
  const std::vector<std::pair<const char*, std::string>> rows = {
      {"long query", "GET /webapi/entry.cgi?" + Probe("size", "v=" + megabyte) +
                         " HTTP/1.1\r\nHost: " + server().Host() + "\r\nConnection: close\r\n\r\n"},
      {"long header", line + "X-Long: " + megabyte + "\r\nContent-Length: 3\r\n\r\nv=x"},
      {"chunked body", line + "Transfer-Encoding: chunked\r\n\r\n3\r\nv=x\r\n0\r\n\r\n"},
      {"negative length", line + "Content-Length: -3\r\n\r\nv=x"},
      {"length that is no number", line + "Content-Length: three\r\n\r\nv=x"},
      {"two lengths", line + "Content-Length: 3\r\nContent-Length: 2\r\n\r\nv=x"},
      {"unknown method", "BREW /webapi/entry.cgi HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n"},
  };
  for (const auto& [name, request] : rows) {
    SCOPED_TRACE(name);
    const HttpResponse response = server().SendRaw(request);
    EXPECT_TRUE(response.closed);
    const bool refused = response.status >= 400 && response.status < 502;
    const bool answered = response.status == 200 && (response.body == Failure(101) ||
                                                     response.body.rfind("{\"data\":", 0) == 0);
    EXPECT_TRUE(refused || answered) << response.status << " " << response.body.substr(0, 200);
  }
}

TEST_P(HostileRequests, AClientThatHangsUpLeavesNoProgramBehind) {
  const std::string head = "POST /webapi/entry.cgi?" + Probe("size") +
                           " HTTP/1.1\r\nHost: x\r\nContent-Length: 100000\r\n";
  for (const std::string& request :
       {head, head + "\r\n", head + "\r\nv=" + std::string(70000, 'x')}) {
    EXPECT_TRUE(server().SendRaw(request, AfterRequest::kHangUp).closed);
  }
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (server().RunsPrograms() && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  EXPECT_FALSE(server().RunsPrograms());
}

}  // namespace

}  // namespace e2e
