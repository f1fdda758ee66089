// The examples do what their comments and the documentation say.

#include <json/reader.h>
#include <json/value.h>

#include <sstream>

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
      {library + "get&id=2", 200, Success(middlemarch)},
      {"api=ORBO.Example.Files&version=1&method=fetch&name=../x", 200, Failure(1001)},
      {"api=ORBO.Example.Files&version=1&method=fetch&name=..", 200, Failure(1002)},
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

TEST_P(Examples, CheckNetworkSettings) {
  const std::string ipv4 = "hostname=nas&address=10.1.2.3&";
  const std::string ipv6 = "hostname=nas&address=fd00::2&";
  // The settings, and what the answer has to say: the network or the problems.
  const std::pair<std::string, const char*> rows[] = {
      {ipv4 + "netmask=255.255.255.128&gateway=10.1.2.1&domain=example.com.&port=0&mtu=576"
              R"(&dns=["::1","1.1.1.1"])",
       "10.1.2.0/25"},
      {ipv6 + "prefix=64&gateway=fe80::1%25eth0&dns=::1&mtu=1280", "fd00::/64"},
      {"hostname=nas&address=10.0.0.0&prefix=31&gateway=10.0.0.1", "10.0.0.0/31"},
      {"hostname=5&domain=nas&address=null&netmask=255.0.255.0&gateway=x&dns=[[1]]&prefix=0"
       "&port=65536&mtu=9001",
       "hostname: no host name; domain: no domain; address: no address; netmask: no netmask; "
       "gateway: no address; dns: not up to three addresses; prefix: no number of bits; "
       "port: not 0 to 65535; mtu: not 576 to 9000; "},
      {ipv4 + R"(dns=["::","::","::","::"])", "dns: not up to three addresses; "},
      {ipv4, "prefix: either this or a netmask; "},
      {ipv4 + "prefix=24&netmask=255.0.0.0", "prefix: either this or a netmask; "},
      {ipv4 + "prefix=33", "prefix: longer than the address; "},
      {ipv6 + "netmask=255.0.0.0", "netmask: IPv6 has a prefix; "},
      {"hostname=nas&address=10.1.2.255&prefix=24&gateway=10.1.3.1",
       "address: no host of the network; gateway: not in the network of the address; "},
      {ipv4 + "prefix=24&gateway=10.1.2.3", "gateway: the address itself; "},
      {ipv4 + "prefix=24&gateway=10.1.2.0", "gateway: no host of the network; "},
      {ipv4 + "prefix=24&gateway=fe80::1", "gateway: not in the network of the address; "},
      {ipv6 + "prefix=64&mtu=1279", "mtu: below 1280 for IPv6; "},
  };
  for (const auto& [settings, expected] : rows) {
    Json::Value answer;
    std::istringstream(
        server().Post("", "api=ORBO.Example.Network&version=1&method=check&" + settings).body) >>
        answer;
    std::string text = answer["data"]["network"].asString();
    for (const Json::Value& problem : answer["error"]["errors"]) {
      text += problem["parameter"].asString() + ": " + problem["reason"].asString() + "; ";
    }
    EXPECT_EQ(text, expected) << settings;
  }
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
