#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

#include "platform/cgi.h"
#include "unit/LogCapture.h"
#include "unit/WebAPIDirectory.h"

namespace ORBO {
namespace {

using Variables = std::map<std::string, std::string>;

// Sets the variables while it lives; those that the CGI layer sets go as well.
class Environment {
 public:
  explicit Environment(Variables variables) : variables_(std::move(variables)) {
    for (const auto& [name, value] : variables_) {
      setenv(name.c_str(), value.c_str(), 1);
    }
  }
  ~Environment() {
    for (const auto& variable : variables_) {
      unsetenv(variable.first.c_str());
    }
    unsetenv("SCRIPT_URI");
  }

  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;

 private:
  Variables variables_;
};

TEST(CGIEnvironment, CompletesTheURL) {
  const Variables server = {{"GATEWAY_INTERFACE", "CGI/1.1"},
                            {"REQUEST_SCHEME", "https"},
                            {"HTTP_HOST", "host:5001"},
                            {"REQUEST_URI", "/a/b.cgi?x=/y"},
                            {"SCRIPT_NAME", "/script"}};
  const struct {
    const char* name;
    Variables changes;  // an empty value leaves the variable out
    const char* url;    // "" for none
  } rows[] = {
      {"all", {}, "https://host:5001/a/b.cgi"},
      {"no CGI process", {{"GATEWAY_INTERFACE", ""}}, ""},
      {"set by the server", {{"SCRIPT_URI", "http://other/"}}, "http://other/"},
      {"plain scheme", {{"REQUEST_SCHEME", "http"}}, "http://host:5001/a/b.cgi"},
      {"HTTPS", {{"REQUEST_SCHEME", ""}, {"HTTPS", "On"}}, "https://host:5001/a/b.cgi"},
      {"HTTPS off", {{"REQUEST_SCHEME", ""}, {"HTTPS", "off"}}, "http://host:5001/a/b.cgi"},
      {"odd scheme", {{"REQUEST_SCHEME", "x\r\ny"}}, "http://host:5001/a/b.cgi"},
      {"no host", {{"HTTP_HOST", ""}}, ""},
      {"IPv6 host", {{"HTTP_HOST", "[fe80::1]:80"}}, "https://[fe80::1]:80/a/b.cgi"},
      {"line break in host", {{"HTTP_HOST", "host\r\nX: y"}}, ""},
      {"path in host", {{"HTTP_HOST", "host/x"}}, ""},
      {"user in host", {{"HTTP_HOST", "user@host"}}, ""},
      {"no path", {{"REQUEST_URI", ""}}, "https://host:5001/script"},
      {"whole URL as path", {{"REQUEST_URI", "http://evil/"}}, "https://host:5001/script"},
      {"line break in path", {{"REQUEST_URI", "/a\nb"}}, "https://host:5001/script"},
      {"no path at all", {{"REQUEST_URI", "*"}, {"SCRIPT_NAME", ""}}, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Variables variables = row.changes;
    variables.insert(server.begin(), server.end());
    for (auto it = variables.begin(); it != variables.end();) {
      it = it->second.empty() ? variables.erase(it) : std::next(it);
    }
    const Environment environment(variables);
    OrboCgi cgi;
    OrboCgiInit("", &cgi);
    const char* const url = std::getenv("SCRIPT_URI");
    EXPECT_STREQ(row.url, url != nullptr ? url : "");
  }
}

TEST(CGIEnvironment, LoadsTheCookieLineAnew) {
  OrboCgi cgi;
  {
    const Environment environment(Variables{{"HTTP_COOKIE", "id=1"}});
    OrboCgiLoadInCookies(&cgi);
    EXPECT_EQ("id=1", cgi.cookie_line);
  }
  OrboCgiLoadInCookies(&cgi);
  EXPECT_EQ("", cgi.cookie_line);
}

TEST(CGIEnvironment, ClientAddressHasOneForm) {
  const struct {
    const char* address;
    const char* expected;  // "" for unknown
  } rows[] = {
      {"192.0.2.1", "192.0.2.1"},
      {"::ffff:192.0.2.1", "192.0.2.1"},
      {"0:0:0:0:0:FFFF:c000:0201", "192.0.2.1"},
      {"2001:DB8:0:0::1", "2001:db8::1"},
      {"fe80::1%eth0", "fe80::1"},
      {"1.2.3", ""},
      {"0x7f.0.0.1", ""},
      {"192.0.2.1\n", ""},
      {"192.0.2.1 ", ""},
      {"localhost", ""},
      {"", ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.address);
    const Environment environment(Variables{{"REMOTE_ADDR", row.address}});
    char buffer[65] = "";
    EXPECT_EQ(row.expected[0] != '\0', OrboCgiGetRemoteIP(buffer, sizeof buffer) != 0);
    EXPECT_STREQ(row.expected, buffer);
  }
  const Environment environment(Variables{{"REMOTE_ADDR", "2001:db8::1"}});
  char small[11];
  EXPECT_EQ(0, OrboCgiGetRemoteIP(small, sizeof small));
}

TEST(CGIEnvironment, BodyLimitComesFromTheSettings) {
  const WebAPIDirectory directory;
  const std::string root = std::getenv("WEBAPI_ROOT");
  const struct {
    const char* settings;
    unsigned long long expected;
    bool logged;
  } rows[] = {
      {"", 16777216, false},
      {"max_body_size=1000", 1000, false},
      {"#max_body_size=1\n\t max_body_size \t=\t2000 \nother=3\n", 2000, false},
      {"max_body_size=1\nmax_body_size=2\n", 2, false},
      {"max_body_size", 16777216, false},
      {"max_body_size=16M", 16777216, true},
      {"max_body_size=-1", 16777216, true},
      {"max_body_size=99999999999999999999", 16777216, true},
  };
  EXPECT_EQ(16777216U, OrboCgiMaxBodySize());
  std::filesystem::create_directories(root + "/etc/orbo");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.settings);
    std::ofstream(root + "/etc/orbo/platform.conf") << row.settings;
    const LogCapture log;
    EXPECT_EQ(row.expected, OrboCgiMaxBodySize());
    EXPECT_EQ(row.logged, !log.lines().empty());
  }
}

}  // namespace
}  // namespace ORBO
