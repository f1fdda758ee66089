// The HTTP side of an answer, and what a handler sees and may not see.

#include <sys/resource.h>

#include <algorithm>

#include "server_test.h"

namespace e2e {

namespace {

class Responses : public ServerTest {};
E2E_UNDER_EVERY_SERVER(Responses);

using Lines = std::vector<std::string>;

TEST_P(Responses, CarryEachPrescribedHeaderOnce) {
  for (const char* method : {"echo", "nothing", "noise"}) {
    SCOPED_TRACE(method);
    const HttpResponse response = server().Get(Probe(method));
    EXPECT_EQ(response.Headers("Content-type"), Lines{"application/json; charset=\"UTF-8\""});
    EXPECT_EQ(response.Headers("Cache-Control"),
              Lines{"max-age=0, no-cache, no-store, must-revalidate"});
    EXPECT_EQ(response.Headers("Pragma"), Lines{"no-cache"});
    EXPECT_EQ(response.Headers("Expires"), Lines{"0"});
    EXPECT_EQ(response.Headers("Set-Cookie"), Lines{});
    EXPECT_EQ(response.Headers("Status"), Lines{});
  }
  EXPECT_EQ(server().Get("api=ORBO.Test.Closed&version=1&method=echo").Headers("x-request-error"),
            Lines{"unauth"});
}

TEST_P(Responses, CarryCookiesRedirectsAndStatus) {
  EXPECT_EQ(server().Get(Probe("cookies", "value=a+b;&path=/p")).Headers("Set-Cookie"),
            (Lines{"one=a%20b%3B; path=/", "two=2; path=/p"}));

  const HttpResponse redirect = server().Get(Probe("redirect", "path=x?y=1"));
  EXPECT_EQ(redirect.status, 302);
  EXPECT_EQ(redirect.Headers("Location"), Lines{"http://" + server().Host() + "/x?y=1"});
  EXPECT_EQ(redirect.body, Success("true"));
  EXPECT_EQ(server().Get(Probe("redirect")).body, Failure(117)) << "an empty path";

  EXPECT_EQ(server().Get(Probe("header", "name=Status&value=%22418%22")).status, 418);
  EXPECT_EQ(server().Get(Probe("header", "name=X-Mine&value=v:+w")).Headers("X-Mine"),
            Lines{"v: w"});
}

TEST_P(Responses, NeverCarryAnInjectedLine) {
  struct Row {
    const char* name;
    const char* method;
    const char* parameters;  // %BREAK% stands for each line break in turn
    const char* left_out;    // the header that must not appear at all
  };
  const Row rows[] = {
      {"redirect", "redirect", "path=/x%BREAK%Injected:+1", "Location"},
      {"header value", "header", "name=X-Mine&value=v%BREAK%Injected:+1", "X-Mine"},
      {"header name", "header", "name=X-Mine:+v%BREAK%Injected&value=1", "X-Mine"},
      {"body", "header", "name=X-Mine&value=v%BREAK%%BREAK%Injected:+1", "X-Mine"},
      {"cookie value", "cookies", "value=v%BREAK%Injected:+1&path=/", "none"},
      {"cookie path", "cookies", "value=v&path=/%BREAK%Injected:+1", "none"},
      {"echoed value", "echo", "v=%BREAK%Injected:+1", "none"},
  };
  for (const Row& row : rows) {
    for (const char* line_break : {"%0D%0A", "%0A", "%0D", "%00"}) {
      SCOPED_TRACE(std::string(row.name) + " " + line_break);
      std::string parameters = row.parameters;
      for (std::size_t at; (at = parameters.find("%BREAK%")) != std::string::npos;) {
        parameters.replace(at, 7, line_break);
      }
      const HttpResponse response = server().Post(Probe(row.method), parameters);
      EXPECT_LT(response.status, 400);
      EXPECT_EQ(response.Headers(row.left_out), Lines{});
      EXPECT_EQ(response.Headers("Pragma"), Lines{"no-cache"});
      for (const std::string& line : response.header_lines) {
        EXPECT_NE(line.rfind("Injected", 0), 0U) << line;
        EXPECT_EQ(line.find_first_of(std::string("\r\n\0", 3)), std::string::npos) << line;
      }
      EXPECT_EQ(response.body.rfind("{\"", 0), 0U) << response.body;
    }
  }
  EXPECT_EQ(server()
                .Post(Probe("cookies"), "value=v%0D%0AInjected: 1&path=/p%0AInjected: 1")
                .Headers("Set-Cookie"),
            Lines{"one=v%0D%0AInjected%3A%201; path=/"});
}

TEST_P(Responses, HoldNothingThatAHandlerPrints) {
  const HttpResponse response = server().Get(Probe("noise"));
  EXPECT_EQ(response.status, 200);
  EXPECT_EQ(response.body, Success("\"\""));
}

TEST_P(Responses, ComeFromAHandlerAtItsPriority) {
  // An ordinary process cannot come back from a lower priority than it is given.
  const int expected = std::max(10, getpriority(PRIO_PROCESS, 0));
  EXPECT_EQ(server().Get("api=ORBO.Test.Nice&version=1&method=nice").body,
            Success(std::to_string(expected)));
}

TEST_P(Responses, ShowThatNoHeaderReachesATrustedName) {
  Lines headers;
  for (const std::string name : {"task_id", "task_user", "full_task_id", "orbo_remoteIP",
                                 "APPARMOR_HAT_ARRAY", "orboAccessToken", "HTTP_PROXY"}) {
    std::string dashed = name;
    std::replace(dashed.begin(), dashed.end(), '_', '-');
    headers.push_back(name + ": 10.0.0.1");
    headers.push_back(dashed + ": 10.0.0.1");
  }
  headers.push_back("Proxy: http://10.0.0.1/");
  headers.push_back("X-Forwarded-For: 10.0.0.1");
  EXPECT_EQ(server().Get(Probe("trusted"), headers).body,
            Success(R"({"address":"127.0.0.1","task":false})"));
}

TEST_P(Responses, AreGivenForProgramsOnly) {
  for (const std::string target : {"/webapi/",
                                   "/webapi",
                                   "/",
                                   "/webapi/lib.def",
                                   "/webapi/ORBO.Test.lib",
                                   "/lib.def",
                                   "/entry.cgi",
                                   "/webapi/handlers/",
                                   "/webapi/handlers/libe2e_probe.so",
                                   "/webapi/lib/libwebapi-KEP5.so",
                                   "/webapi/%6cib.def",
                                   "/webapi//lib.def",
                                   "/webapi/x.cgi/../lib.def",
                                   "/webapi/x.cgi/..%2flib.def",
                                   "/webapi/lib.def%00.cgi",
                                   "/webapi/lib.def/x.cgi",
                                   "/webapi/entry.cgi/../lib.def",
                                   "/webapi/../outside.lib",
                                   "/webapi/%2e%2e/outside.lib",
                                   "/webapi../outside.lib",
                                   "/webapi/lib.def?x=.cgi"}) {
    SCOPED_TRACE(target);
    const HttpResponse response = server().Send("GET", target);
    EXPECT_GE(response.status, 400);
    EXPECT_LT(response.status, 500);
    EXPECT_EQ(response.body.find("authLevel"), std::string::npos);
  }
}

}  // namespace

}  // namespace e2e
