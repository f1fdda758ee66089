// Requests that nobody well-meaning sends: each gets a defined answer, and the
// next request is served as before.

#include "server_test.h"

namespace e2e {

namespace {

class HostileRequests : public ServerTest {
 protected:
  void TearDown() override { EXPECT_EQ(server().Get(Probe("echo")).body, Success("{}")); }
};
E2E_UNDER_EVERY_SERVER(HostileRequests);

TEST_P(HostileRequests, LongValuesAreTakenUpToALimit) {
  const std::string deep = std::string(100000, '[') + std::string(100000, ']');
  for (const std::string& value : {deep, std::string(1 << 20, 'x')}) {
    EXPECT_TRUE(server().Post(Probe("echo"), "v=" + value).body ==
                Success("{\"v\":\"" + value + "\"}"));
  }
  EXPECT_EQ(server().Post("", "version=1&method=echo&api=" + deep).body, Failure(102));
  EXPECT_EQ(server().Post(Probe("echo"), "v=" + std::string(17 << 20, 'x')).body, Failure(101));
}

TEST_P(HostileRequests, TheServerOrTheProgramAnswersWhatTheServerMayRefuse) {
  const std::string megabyte(1 << 20, 'x');
  const std::string host = " HTTP/1.1\r\nHost: x\r\nConnection: close\r\n";
  const std::string post = "POST /webapi/entry.cgi?" + Probe("echo") + host;
  for (const std::string& request :
       {"GET /webapi/entry.cgi?" + Probe("echo", "v=" + megabyte) + host + "\r\n",
        post + "X-Long: " + megabyte + "\r\nContent-Length: 3\r\n\r\nv=x",
        post + "Transfer-Encoding: chunked\r\n\r\n3\r\nv=x\r\n0\r\n\r\n",
        post + "Content-Length: -3\r\n\r\nv=x", post + "Content-Length: three\r\n\r\nv=x",
        post + "Content-Length: 3\r\nContent-Length: 2\r\n\r\nv=x",
        "BREW /webapi/entry.cgi" + host + "\r\n"}) {
    SCOPED_TRACE(request.substr(0, 200));
    const HttpResponse response = server().SendRaw(request);
    EXPECT_TRUE(response.closed);
    const bool refused = response.status >= 400 && response.status < 502;
    const bool answered =
        response.status == 200 && (response.body.find(Failure(101)) != std::string::npos ||
                                   response.body.find("{\"data\":") != std::string::npos);
    EXPECT_TRUE(refused || answered) << response.status << " " << response.body.substr(0, 200);
  }
}

TEST_P(HostileRequests, AClientThatHangsUpLeavesNoProgramBehind) {
  const std::string head = "POST /webapi/entry.cgi?" + Probe("echo") +
                           " HTTP/1.1\r\nHost: x\r\nContent-Length: 100000\r\n";
  for (const std::string& request :
       {head, head + "\r\n", head + "\r\nv=" + std::string(70000, 'x')}) {
    EXPECT_TRUE(server().SendRaw(request, AfterRequest::kHangUp).closed);
  }
  EXPECT_TRUE(WaitUntil([] { return !server().RunsPrograms(); }, std::chrono::seconds(20)));
}

}  // namespace

}  // namespace e2e
