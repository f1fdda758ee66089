// Calls and uploads that one server makes at another one, and servers that do not
// behave.

#include <sys/stat.h>

#include <filesystem>

#include "server_test.h"
#include "support/HostileServer.h"

namespace e2e {

namespace {

namespace fs = std::filesystem;

const char kHead[] = "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\n";
const char kDone[] = "{\"success\":true}";
const char kWho[] = "api=ORBO.Test.Permission&version=1&method=who";
constexpr std::chrono::seconds kLimit(10);

std::string Answer(const std::string& body) {
  return kHead + ("Content-Length: " + std::to_string(body.size()) + "\r\n\r\n") + body;
}

class Relay : public ServerTest {
 protected:
  // The other server, with HTTPS.
  static WebServer& other() {
    static WebServer server(ServerKind::kApache, Certificates() + "/server.pem");
    return server;
  }
  // A directory with two authorities and a certificate of the first one.
  static std::string Certificates() {
    static const TestRoot root;
    static const std::string command =
        "cd " + root.RunDirectory() +
        " && exec 2> openssl.log && make='openssl req -x509 -newkey rsa:2048 -nodes -days 2'"
        " && for name in ca other; do $make -subj /CN=$name -keyout $name.key -out $name.pem; done"
        " && $make -subj /CN=x -CA ca.pem -CAkey ca.key -keyout key -out certificate"
        " -addext subjectAltName=IP:127.0.0.1 -addext basicConstraints=CA:FALSE"
        " && cat key certificate > server.pem && openssl pkey -in key -pubout -outform DER |"
        " openssl dgst -sha256 -binary | base64 | tr -d '\\n' > pin";
    static const int made = std::system(command.c_str());
    EXPECT_EQ(made, 0);
    return root.RunDirectory();
  }
  static std::string Entry(const std::string& host) { return host + "/webapi/entry.cgi"; }

  void SetUp() override {
    if (*E2E_APACHE == '\0') {
      GTEST_SKIP() << "Apache is not installed";
    }
    for (const WebServer* const box : {&server(), &other()}) {
      const std::string etc = box->root().path() + "/etc/orbo";
      fs::create_directories(etc + "/relay.d");
      std::ofstream(etc + "/platform.conf") << "administrators=ada\nvolumes=/var/lib/orbo\n";
      fs::copy(Certificates() + "/ca.pem", etc);
      fs::copy(Certificates() + "/other.pem", etc);
    }
    admin_ = Run("session open ada");
    Target("http://" + Entry(other().Host()));
  }
  void TearDown() override {
    EXPECT_TRUE(WaitUntil([] { return !server().RunsPrograms(); }, kLimit));
    fs::remove_all(Path("/etc/orbo"));
    fs::remove_all(other().root().path() + "/etc/orbo");
  }

  // An access token for ada at the other server.
  static std::string Token() {
    static const std::string token =
        Shell("WEBAPI_ROOT=" + other().root().path() +
              " " E2E_COMMAND
              " token create ada --api ORBO.Test.Probe --api ORBO.Test.Permission:who"
              " --api ORBO.Example.Share");
    return token;
  }
  // Makes the target 1.
  static void Target(const std::string& url, const std::string& lines = "") {
    const std::string path = Path("/etc/orbo/relay.d/1");
    std::ofstream(path) << "url=" << url << "\ntoken=" << Token() << "\n" << lines;
    chmod(path.c_str(), 0640);
    server().root().HandOver();
    other().root().HandOver();
  }
  std::string Send(const std::string& query) const {
    return server().Get(query + "&relay_ds=1&_sid=" + admin_).body;
  }
  std::string Upload(const std::string& query, const std::string& body) const {
    const std::string own = "/webapi/entry.cgi?relay_ds=1&_sid=" + admin_ + "&";
    return server().Send("POST", own + query, {kFormType}, body).body;
  }
  // The error that the command finds the target to have; 0 when it answers.
  static int TestResult() {
    // No proxy of the environment is asked.
    const std::string text =
        Shell("http_proxy=127.0.0.1:1 HTTPS_PROXY=127.0.0.1:1 WEBAPI_ROOT=" + Path("") +
              " " E2E_COMMAND " relay test 1 2>&1; :");
    const std::size_t error = text.rfind("(error ");
    return error != std::string::npos ? std::atoi(text.c_str() + error + 7)
                                      : -(text.rfind("target 1: answers in ", 0) != 0);
  }

  std::string admin_;
};
E2E_UNDER_EVERY_SERVER(Relay);

TEST_P(Relay, CallsAreMadeAtTheOtherServer) {
  const std::string params =
      "a=10&b=%2210%22&c=x+y%26&d=[1,{%22e%22:null}]&f=%22null%22&g=1.0&h=&i=%22%5C%22x%5C%22%22"
      "&tid=mine&relay_timeout=9";
  EXPECT_EQ(Send(Probe("echo", params)),
            Success(R"({"a":10,"b":"10","c":"x y&","d":[1,{"e":null}],"f":"null","g":1.0,"h":"",)"
                    R"("i":"\"x\"","tid":")" +
                    Token() + "\"}"));
  EXPECT_NE(Send(kWho).find("\"user\":\"ada\""), std::string::npos);
  // Errors of the other server: its token is not for this method, there is no such file.
  EXPECT_EQ(Send("api=ORBO.Test.Permission&version=1&method=own"), Failure(119));
  EXPECT_NE(Send("api=ORBO.Example.Share&version=1&method=download&name=none").find("1002"),
            std::string::npos);
}

TEST_P(Relay, WhoMayNotRelayDoesNotReachTheTarget) {
  HostileServer target({Answer(kDone)});
  const std::string member = "relay_ds=1&_sid=" + Run("session open www-data");
  const std::string late = Run("session open ada --timeout 1");
  Shell("touch -d '2 minutes ago' " + Path("/run/orbo/sessions/" + late));
  const std::string admin = "&_sid=" + admin_;
  const struct {
    std::string query;
    int error;  // 0: it is relayed
    std::string lines = "";
    std::vector<std::string> headers = {};
  } rows[] = {
      {Probe("echo", "relay_ds=1"), 119},
      {Probe("echo", "relay_ds=1&_sid=" + late), 106},
      {Probe("none", "relay_ds=1" + admin), 103},
      {Probe("echo", member), 109},
      {Probe("echo", member), 0, "users=ada @www-data\n"},
      {Probe("echo", "relay_ds=1" + admin), 109, "users=ben, @nogroup\n"},
      {Probe("echo", "relay_ds=2" + admin), 109},
      // Not to be cut to 32 bits.
      {Probe("echo", "relay_ds=4294967297" + admin), 109},
      {Probe("echo", "relay_ds=1" + admin), 0, "", {"X-Webapi-Relay-Hops: 3"}},
      {Probe("echo", "relay_ds=1" + admin), 109, "", {"X-Webapi-Relay-Hops: 4"}},
      {Probe("echo", "relay_ds=1" + admin), 109, "", {"X-Webapi-Relay-Hops: -9"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.query + " " + row.lines);
    Target("http://" + target.Host(), row.lines);
    const std::size_t before = target.requests.size();
    EXPECT_EQ(server().Get(row.query, row.headers).body,
              row.error == 0 ? kDone : Failure(row.error));
    EXPECT_EQ(target.requests.size() - before, row.error == 0 ? 1U : 0U);
  }
}

TEST_P(Relay, NothingOfTheCallersGoesAlong) {
  HostileServer target({Answer(kDone)});
  Target("http://" + target.Host() + "/x?y=1");
  const std::string token = Token();
  const std::string head =
      " HTTP/1.1\r\nHost: " + target.Host() + "\r\nAccept: */*\r\nX-Webapi-Relay-Hops: 1\r\n";
  const std::string file =
      Part("name=f; filename=x\r\nContent-Type: a/b", std::string(1100000, 'c')) +
      Field("api", "ORBO.Test.Closed") + "--b--\r\nepilogue";
  const std::string names =
      Field("api", "ORBO.Test.Probe") + Field("version", "1") + Field("method", "upload");
  const struct {
    std::string query;
    std::string body;
    std::string target;  // of the first request line
    std::string fields;
    std::string params;  // of the call after it
  } rows[] = {
      // Fields that would name another call, credential or target stay here.
      {Probe("upload", "n=10&t=x&a=z&%22=1&%22%5C=y"),
       "preamble\r\n" + Field("a", "1") + Field("method", "echo") + Field("tid", "mine") +
           Field("_sid", "mine") + Field("relay_ds", "2") + file,
       "/x?y=1&%22=1&n=10", Field("\\\"\\\\", "y") + Field("t", "x") + Field("a", "1"),
       "&%22=1&%22%5C=y&a=z&n=10&t=x"},
      {"n=10", names + Field("t", "7") + file, "/x?y=1&n=10", Field("t", "7"), "&n=10&t=%227%22"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.query);
    const std::size_t before = target.requests.size();
    EXPECT_EQ(Upload(row.query, row.body), kDone);
    const std::vector<std::string> requests = target.requests;
    ASSERT_EQ(requests.size(), before + 2);
    const std::string body = row.fields + Field("tid", token) + names + file;
    EXPECT_EQ(requests[before], "POST " + row.target + head + kFormType + "\r\nContent-Length: " +
                                    std::to_string(body.size()) + "\r\n\r\n" + body);
    const std::string line =
        "api=ORBO.Test.Probe&version=1&method=upload&tid=" + token + row.params;
    EXPECT_EQ(requests[before + 1],
              "POST /x?y=1" + head +
                  "Content-Type: application/x-www-form-urlencoded\r\nContent-Length: " +
                  std::to_string(line.size()) + "\r\n\r\n" + line);
  }
  // A text that holds the form's boundary could become fields of its own.  lighttpd does
  // not let the last two in.
  EXPECT_EQ(Upload(Probe("upload", "t=--b"), "--b--\r\n"), Failure(109));
  Upload(Probe("upload", "%7F=x"), "--b--\r\n");
  Upload(Probe("upload", "t=" + Escape("x\r\n" + Field("method", "echo"))), "--b--\r\n");
  EXPECT_EQ(Upload(Probe("upload"), Field("a", "1") + "--b"), Failure(109));
  EXPECT_EQ(target.requests.size(), 4U);
}

TEST_P(Relay, UploadsAreKeptAtTheOtherServer) {
  const std::string content = std::string(3 << 20, '-') + "end";
  const std::string share = "api=ORBO.Example.Share&version=1&method=upload";
  const std::string kept = other().root().path() + "/var/lib/orbo/share/";
  // The answer is that of the call, which comes after the upload and has no file.
  EXPECT_NE(Upload(share, Part("name=f; filename=x", content) + "--b--\r\n").find("1001"),
            std::string::npos);
  EXPECT_EQ(ReadFile(kept + "x"), content);
  // Cut short here, it is none there.
  EXPECT_EQ(Upload(share, Part("name=f; filename=cut", content)), Failure(109));
  EXPECT_FALSE(fs::exists(kept + "cut"));
  // lighttpd lets the program answer before the body has come.
  if (GetParam() == ServerKind::kLighttpd) {
    Target("http://" + Entry(other().Host()), "upload_timeout=1\n");
    const std::string request = "POST /webapi/entry.cgi?relay_ds=1&_sid=" + admin_ + "&" + share +
                                " HTTP/1.0\r\nContent-Length: 900000\r\n" + kFormType + "\r\n\r\n" +
                                Part("name=f; filename=stuck", std::string(100000, '-'));
    EXPECT_EQ(server().SendRaw(request).body, Failure(109));
    EXPECT_FALSE(fs::exists(kept + "stuck"));
  }
  EXPECT_TRUE(WaitUntil([] { return !other().RunsPrograms(); }, kLimit));
}

TEST_P(Relay, OnlyTheRightServerIsTrusted) {
  const std::string good = "https://" + Entry(other().TlsHost());
  const std::string pin = "pin=sha256//" + ReadFile(Certificates() + "/pin") + "\n";
  const std::string wrong_pin = "pin=sha256//" + std::string(43, 'A') + "=\n";
  const std::string ca = "ca=/etc/orbo/ca.pem\n";
  const struct {
    std::string url;
    std::string lines;
    int error;  // of the library
  } rows[] = {
      {good, ca, 0},
      {good, ca + pin, 0},
      {good, "", 60},
      {good, "ca=/etc/orbo/other.pem\n", 60},
      {good, "ca=/etc/orbo/none.pem\n", 77},
      {"https://localhost" + good.substr(good.rfind(':')), ca, 60},
      {good, ca + wrong_pin, 90},
      {good, "verify=no\n", 0},
      {good, "verify=no\n" + wrong_pin, 90},
      {"https://" + Entry(other().Host()), ca, 35},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.url + " " + row.lines);
    Target(row.url, row.lines);
    EXPECT_EQ(Send(Probe("echo")),
              row.error == 0 ? Success("{\"tid\":\"" + Token() + "\"}") : Failure(109));
    EXPECT_EQ(TestResult(), row.error);
  }
  EXPECT_EQ(Run("relay list --json").find(Token()), std::string::npos);
  // Nor does a use of the same library before spoil the check.
  Target(good, ca);
  const std::string call = Probe("echo", "relay_ds=1&_sid=" + admin_);
  const std::string sealed = Run("encrypt '" + call + "'");
  server().root().HandOver();
  EXPECT_EQ(server().Get(sealed).body, Success("{\"tid\":\"" + Token() + "\"}"));
}

TEST_P(Relay, ServersThatDoNotBehaveAreAFailure) {
  const std::string page = kHead + std::string("\r\n");
  const std::string elsewhere = "\r\nLocation: http://" + Entry(other().Host()) + "\r\n\r\n";
  const struct {
    std::string name;
    Behaviour behaviour;
    int error;
  } rows[] = {
      {"silent", {"", 0}, 28},
      {"slow", {page + std::string(300, ' '), 50, 100000}, 28},
      {"hangs up", {""}, 52},
      {"garbage", {"\x16\x03\x01garbage\r\n\r\n"}, 1},
      {"page", {page + "<script>alert(1)</script>"}, 8},
      {"two answers", {page + kDone + kDone}, 8},
      {"other object", {page + "{\"success\":\"true\"}"}, 8},
      {"redirect", {"HTTP/1.1 307 X" + elsewhere}, 22},
      {"announced", {kHead + std::string("Content-Length: 2147483648\r\n\r\n"), 1}, 63},
      {"endless", {page + std::string(1 << 20, ' '), 2048}, 63},
      {"bad chunks", {kHead + std::string("Transfer-Encoding: chunked\r\n\r\nzz\r\n{}")}, 56},
      {"compressed", {kHead + std::string("Content-Encoding: gzip\r\n\r\n\x1f\x8b\x08")}, 8},
      {"NUL", {page + "{\"success\":true,\"a\":\"" + '\0' + "\"}"}, 8},
      {"deep", {page + "{\"success\":true,\"a\":" + std::string(1 << 20, '[')}, 8},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    HostileServer target(row.behaviour);
    const bool is_late = row.error == 28;
    Target("http://" + target.Host(), is_late ? "timeout=1\n" : "timeout=60\n");
    const HttpResponse response =
        server().Get(Probe("echo", "relay_ds=1&relay_timeout=90&_sid=" + admin_));
    EXPECT_EQ(response.body, Failure(109));
    EXPECT_LT(response.seconds, is_late ? 5 : 60);
    EXPECT_EQ(TestResult(), row.error);
  }
  HostileServer silent({"", 0});
  Target("http://" + silent.Host());
  EXPECT_LT(server().Get(Probe("echo", "relay_ds=1&relay_timeout=1&_sid=" + admin_)).seconds, 5);
  // An upload may last, but not stand still.
  Target("http://" + silent.Host(), "timeout=1\n");
  EXPECT_EQ(Upload(Probe("upload"), "--b--\r\n"), Failure(109));
  // What a call is answered is the client's to judge; an upload's answer nobody sees.
  HostileServer refusing({Answer("{\"success\":false}")});
  Target("http://" + refusing.Host());
  EXPECT_EQ(Send(Probe("echo")), "{\"success\":false}");
  EXPECT_EQ(Upload(Probe("upload"), "--b--\r\n"), Failure(109));
  EXPECT_EQ(refusing.requests.size(), 2U);
  Target("http://" + refusing.Host(), "max_answer_size=9\n");
  EXPECT_EQ(Send(Probe("echo")), Failure(109));
}

}  // namespace

}  // namespace e2e
