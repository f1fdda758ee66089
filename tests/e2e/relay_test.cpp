// Calls and uploads that one server makes at another one, and servers that do not
// behave.

#include <sys/socket.h>
#include <unistd.h>

#include <filesystem>

#include "server_test.h"
#include "support/HostileServer.h"

namespace e2e {

namespace {

namespace fs = std::filesystem;

const char kDone[] = "HTTP/1.1 200 OK\r\nContent-Length: 16\r\n\r\n{\"success\":true}";

class Relay : public ServerTest {
 protected:
  // The other server, of the same kind and with HTTPS.
  static WebServer& other() {
    static std::map<ServerKind, std::unique_ptr<WebServer>> servers;
    std::unique_ptr<WebServer>& server = servers[GetParam()];
    if (!server) {
      server = std::make_unique<WebServer>(GetParam(), Certificates() + "/server.pem");
    }
    return *server;
  }
  // A directory with an authority, another one, and a certificate of the first.
  static const std::string& Certificates() {
    static const TestRoot root;
    static const int made = std::system(
        ("cd " + root.RunDirectory() +
         " && exec 2> openssl.log"
         " && for name in ca other; do openssl req -x509 -newkey rsa:2048 -nodes -subj /CN=$name"
         " -keyout $name.key -out $name.pem -days 2; done"
         " && openssl req -newkey rsa:2048 -nodes -subj /CN=target -keyout server.key"
         " -out server.csr && echo subjectAltName=IP:127.0.0.1 > server.ext"
         " && openssl x509 -req -in server.csr -CA ca.pem -CAkey ca.key -CAcreateserial"
         " -extfile server.ext -days 2 -out server.crt && cat server.key server.crt > server.pem"
         " && openssl x509 -in server.crt -noout -pubkey | openssl pkey -pubin -outform DER |"
         " openssl dgst -sha256 -binary | base64 > pin")
            .c_str());
    EXPECT_EQ(made, 0);
    static const std::string directory = root.RunDirectory();
    return directory;
  }

  void SetUp() override {
    fs::create_directories(Path("/etc/orbo/relay.d"));
    std::ofstream(Path("/etc/orbo/platform.conf")) << "administrators=ada\n";
    for (const char* name : {"ca", "other"}) {
      fs::copy_file(Certificates() + "/" + name + ".pem", Path("/etc/orbo/") + name + ".pem",
                    fs::copy_options::overwrite_existing);
    }
    Target(1, "url=http://" + other().Host() + "/webapi/entry.cgi");
    admin_ = Run("session open ada");
    server().root().HandOver();
  }
  void TearDown() override {
    EXPECT_TRUE(WaitUntil([this] { return !server().RunsPrograms(); }, std::chrono::seconds(10)));
    fs::remove_all(Path("/etc/orbo"));
  }

  static std::string Token(const WebServer& at) {
    static std::map<std::string, std::string> tokens;
    std::string& token = tokens[at.root().path()];
    if (token.empty()) {
      token = Shell("WEBAPI_ROOT=" + at.root().path() +
                    " " E2E_COMMAND
                    " token create ben --api ORBO.Test.Probe --api ORBO.Test.Permission:who"
                    " --api ORBO.Example.Share");
      at.root().HandOver();
    }
    return token;
  }
  static void Target(int id, const std::string& lines) {
    const std::string path = Path("/etc/orbo/relay.d/" + std::to_string(id));
    std::ofstream(path) << lines << "\ntoken=" << Token(other()) << "\n";
    chmod(path.c_str(), 0640);
    server().root().HandOver();
  }
  // Relays the call of `query` to the target 1 as the user of the session.
  std::string Send(const std::string& query, const std::string& session) const {
    return server().Get(query + "&relay_ds=1&_sid=" + session).body;
  }
  std::string Send(const std::string& query) const { return Send(query, admin_); }
  HttpResponse Upload(const std::string& query, const std::string& body) const {
    return server().Send("POST", "/webapi/entry.cgi?relay_ds=1&_sid=" + admin_ + query,
                         {"Content-Type: multipart/form-data; boundary=b"}, body);
  }

  std::string admin_;
};
E2E_UNDER_EVERY_SERVER(Relay);

const char kWho[] = "api=ORBO.Test.Permission&version=1&method=who";

TEST_P(Relay, CallsAreTheOtherServers) {
  const std::string params = "a=10&b=%2210%22&c=x+y%26&d=[1,{%22e%22:null}]&f=true&g=1.5&h=";
  const std::string echoed =
      R"({"a":10,"b":"10","c":"x y&","d":[1,{"e":null}],"f":true,"g":1.5,"h":"","tid":")" +
      Token(other()) + "\"}";
  EXPECT_EQ(Send(Probe("echo", params + "&tid=mine&relay_timeout=30")), Success(echoed));
  EXPECT_NE(Send(kWho).find("\"user\":\"ben\""), std::string::npos);
}

}  // namespace

}  // namespace e2e
