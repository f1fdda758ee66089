#include <gtest/gtest.h>
#include <webapi/APIRequest.h>

#include <cstdlib>
#include <map>
#include <string>

#include "platform/cgi.h"
#include "unit/LogCapture.h"
#include "unit/WebAPIDirectory.h"
#include "unit/json.h"

namespace ORBO {
namespace {

TEST(CGIEnvironment, CompletesTheURL) {
  using Variables = std::map<std::string, std::string>;  // an empty value: not set
  const Variables server = {{"GATEWAY_INTERFACE", "CGI/1.1"},
                            {"REQUEST_SCHEME", "https"},
                            {"HTTP_HOST", "host:5001"},
                            {"REQUEST_URI", "/a/b.cgi?x=/y"},
                            {"SCRIPT_NAME", "/script"},
                            {"HTTPS", ""},
                            {"SCRIPT_URI", ""}};
  const std::pair<Variables, const char*> rows[] = {
      // the changes; the URL, null for none
      {{}, "https://host:5001/a/b.cgi"},
      {{{"GATEWAY_INTERFACE", ""}}, nullptr},
      {{{"SCRIPT_URI", "http://other/"}}, "http://other/"},
      {{{"REQUEST_SCHEME", ""}, {"HTTPS", "On"}}, "https://host:5001/a/b.cgi"},
      {{{"REQUEST_SCHEME", ""}, {"HTTPS", "off"}}, "http://host:5001/a/b.cgi"},
      {{{"REQUEST_SCHEME", "x\r\ny"}}, "http://host:5001/a/b.cgi"},
      {{{"HTTP_HOST", ""}}, nullptr},
      {{{"HTTP_HOST", "[fe80::1]:80"}}, "https://[fe80::1]:80/a/b.cgi"},
      {{{"HTTP_HOST", "host\r\nX: y"}}, nullptr},
      {{{"HTTP_HOST", "host/x"}}, nullptr},
      {{{"HTTP_HOST", "user@host"}}, nullptr},
      {{{"REQUEST_URI", "http://evil/"}}, "https://host:5001/script"},
      {{{"REQUEST_URI", "/a\nb"}}, "https://host:5001/script"},
      {{{"REQUEST_URI", "*"}, {"SCRIPT_NAME", ""}}, nullptr},
  };
  for (const auto& [changes, url] : rows) {
    SCOPED_TRACE(testing::PrintToString(changes));
    Variables variables = changes;
    variables.insert(server.begin(), server.end());
    for (const auto& [name, value] : variables) {
      value.empty() ? unsetenv(name.c_str()) : setenv(name.c_str(), value.c_str(), 1);
    }
    OrboCgi cgi;
    OrboCgiInit("", &cgi);
    OrboCgiFree(&cgi);
    EXPECT_STREQ(url, std::getenv("SCRIPT_URI"));
  }
  for (const auto& variable : server) {
    unsetenv(variable.first.c_str());
  }
}

TEST(CGIEnvironment, ClientAddressHasOneForm) {
  char buffer[65] = "";
  setenv("REMOTE_ADDR", "2001:DB8:0:0::1", 1);
  EXPECT_NE(0, OrboCgiGetRemoteIP(buffer, sizeof buffer));
  EXPECT_STREQ("2001:db8::1", buffer);
  setenv("REMOTE_ADDR", "fe80::1%eth0", 1);
  EXPECT_EQ(0, OrboCgiGetRemoteIP(buffer, 7));
  EXPECT_NE(0, OrboCgiGetRemoteIP(buffer, 8));
  EXPECT_STREQ("fe80::1", buffer);
  const Json::Value known = FromText(R"({"environ":{"orbo_remoteIP":"10.0.0.9"}})");
  EXPECT_EQ("10.0.0.9", APIRequest(known).GetRemoteIP());
  for (const char* address : {"1.2.3", "0x7f.0.0.1", "192.0.2.1\n", "192.0.2.1 ", "host", ""}) {
    setenv("REMOTE_ADDR", address, 1);
    EXPECT_EQ(0, OrboCgiGetRemoteIP(buffer, sizeof buffer)) << address;
  }
  unsetenv("REMOTE_ADDR");
}

TEST(CGIEnvironment, BodyLimitComesFromTheSettings) {
  const WebAPIDirectory directory;
  EXPECT_EQ(16777216U, OrboCgiMaxBodySize());
  directory.Configure("#max_body_size=1\nmax_body_size=2\n\t max_body_size \t=\t2000 \nother=3\n");
  EXPECT_EQ(2000U, OrboCgiMaxBodySize());
  const LogCapture log;
  for (const char* refused : {"16M", "-1", "99999999999999999999"}) {
    directory.Configure(std::string("max_body_size=") + refused);
    EXPECT_EQ(16777216U, OrboCgiMaxBodySize()) << refused;
  }
  EXPECT_EQ(3U, log.lines().size());
}

}  // namespace
}  // namespace ORBO
