#pragma once

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "support/WebServer.h"
#include "support/wait.h"

namespace e2e {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

// Tests that run under every web server; one server of each kind serves all of
// them.
class ServerTest : public ::testing::TestWithParam<ServerKind> {
 protected:
  static WebServer& server() {
    std::unique_ptr<WebServer>& server = servers_[GetParam()];
    if (!server) {
      server = std::make_unique<WebServer>(GetParam());
    }
    return *server;
  }

  static std::string Path(const std::string& path) { return server().root().path() + path; }
  // The first line that a command of the shell prints.
  static std::string Shell(const std::string& command) {
    const std::string output = Path("/run/command.out");
    EXPECT_EQ(0, std::system(("(" + command + ") > " + output + " 2> /dev/null").c_str()))
        << command;
    const std::string text = ReadFile(output);
    return text.substr(0, text.find('\n'));
  }
  // The same of the command webapi.
  static std::string Run(const std::string& arguments) {
    return Shell("WEBAPI_ROOT=" + Path("") + " " E2E_COMMAND " " + arguments);
  }

  // Writes the platform's settings, and gives the root directory to the server's user.
  static void Configure(const std::string& lines) {
    fs::create_directories(Path("/etc/orbo"));
    std::ofstream(Path("/etc/orbo/platform.conf"))
        << (geteuid() == 0 ? "service_user=www-data\n" : "") << lines;
    server().root().HandOver();
  }
  // Asks for a file, with whole header lines, in the version of the protocol from which
  // on all servers know ranges.
  static HttpResponse Fetch(const std::string& query, const std::string& headers = "",
                            const std::string& method = "GET", const Watch& watch = nullptr) {
    return server().SendRaw(method + " /webapi/entry.cgi?" + query +
                                " HTTP/1.1\r\nHost: x\r\nConnection: close\r\n" + headers + "\r\n",
                            AfterRequest::kListen, watch);
  }

  // What a sanitizer finds at the end of a program comes after the answer.
  static void TearDownTestSuite() {
    for (const auto& [kind, server] : servers_) {
      const std::string log = ReadFile(server->root().RunDirectory() + "/error.log");
      EXPECT_EQ(log.find("Sanitizer"), std::string::npos) << log;
    }
  }

 private:
  static inline std::map<ServerKind, std::unique_ptr<WebServer>> servers_;
};

// The server in the names of tests and in their reports.
inline void PrintTo(ServerKind kind, std::ostream* out) {
  *out << (kind == ServerKind::kLighttpd ? "lighttpd"
           : kind == ServerKind::kApache ? "apache"
                                         : "nginx");
}

#define E2E_UNDER_EVERY_SERVER(suite)                                                    \
  INSTANTIATE_TEST_SUITE_P(                                                              \
      Web, suite,                                                                        \
      ::testing::Values(ServerKind::kLighttpd, ServerKind::kApache, ServerKind::kNginx), \
      ::testing::PrintToStringParamName())

// The query of a method of the probe API.
inline std::string Probe(const std::string& method, const std::string& parameters = "") {
  return "api=ORBO.Test.Probe&version=1&method=" + method +
         (parameters.empty() ? "" : "&" + parameters);
}

// The two shapes of an answer, as bytes.
inline std::string Success(const std::string& data) {
  return "{\"data\":" + data + ",\"success\":true}\n";
}
inline std::string Failure(int code) {
  return "{\"error\":{\"code\":" + std::to_string(code) + "},\"success\":false}\n";
}

// A value as it stands in a query or form.
inline std::string Escape(const std::string& text) {
  static const char kDigits[] = "0123456789ABCDEF";
  std::string escaped;
  for (const char character : text) {
    const unsigned char byte = static_cast<unsigned char>(character);
    escaped += {'%', kDigits[byte / 16], kDigits[byte % 16]};
  }
  return escaped;
}

}  // namespace e2e
