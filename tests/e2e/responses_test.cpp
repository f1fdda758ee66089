// The HTTP side of an answer, and what a handler sees and may not see.

#include <algorithm>

#include "server_test.h"

namespace e2e {

namespace {

class Responses : public ServerTest {};
E2E_UNDER_EVERY_SERVER(Responses);

TEST_P(Responses, CarryEachPrescribedHeaderOnceAndNothingThatAHandlerPrints) {
  const HttpResponse response = server().Get(Probe("noise"));
  EXPECT_EQ(response.status, 200);
  EXPECT_EQ(response.Headers("Content-type"), Lines{"application/json; charset=\"UTF-8\""});
  EXPECT_EQ(response.Headers("Cache-Control").size(), 1U);
  EXPECT_EQ(response.Headers("Set-Cookie"), Lines{});
  EXPECT_EQ(response.Headers("Status"), Lines{});
  EXPECT_EQ(response.body, Success("-1"));
}

TEST_P(Responses, CarryCookiesRedirectsAndStatus) {
  EXPECT_EQ(server().Get(Probe("cookies", "value=a+b;&path=/p")).Headers("Set-Cookie"),
            (Lines{"one=a%20b%3B; path=/", "two=2; path=/p"}));
  for (const char* path : {"path=x?y=1", "path=/x?y=1"}) {
    const HttpResponse redirect = server().Get(Probe("redirect", path));
    EXPECT_EQ(redirect.status, 302);
    EXPECT_EQ(redirect.Headers("Location"), Lines{"http://" + server().Host() + "/x?y=1"});
    EXPECT_EQ(redirect.body, Success("true"));
  }
  EXPECT_EQ(server().Get(Probe("redirect")).body, Failure(117)) << "an empty path";
  EXPECT_EQ(server().Get(Probe("header", "name=Status&value=%22418%22")).status, 418);
}

TEST_P(Responses, NeverCarryAnInjectedLine) {
  // The method, the parameters before and after the line break, and the header that must
  // not appear at all.
  const std::tuple<std::string, std::string, const char*, const char*> rows[] = {
      {"redirect", "path=/x", "Injected:+1", "Location"},
      {"header", "name=X-Mine&value=v", "Injected:+1", "X-Mine"},
      {"header", "name=X-Mine:+v", "Injected&value=1", "X-Mine"},
      {"cookies", "path=/&value=v", "Injected:+1", "none"},
      {"cookies", "value=v&path=/", "Injected:+1", "none"},
  };
  for (const auto& [method, before, after, left_out] : rows) {
    for (const char* line_break : {"%0D%0A", "%0A", "%0D", "%00", "%0D%0A%0D%0A"}) {
      SCOPED_TRACE(method + " " + before + line_break);
      const HttpResponse response = server().Post(Probe(method), before + line_break + after);
      EXPECT_LT(response.status, 400);
      EXPECT_EQ(response.Headers(left_out), Lines{});
      for (const std::string& line : response.header_lines) {
        EXPECT_NE(line.rfind("Injected", 0), 0U) << line;
        EXPECT_EQ(line.find_first_of(std::string("\r\n\0", 3)), std::string::npos) << line;
      }
      EXPECT_EQ(response.body.rfind("{\"", 0), 0U) << response.body;
    }
  }
}

TEST_P(Responses, ShowThatNoHeaderReachesATrustedName) {
  Lines headers = {"Proxy: http://10.0.0.1/", "X-Forwarded-For: 10.0.0.1"};
  for (const std::string name : {"task_id", "task_user", "full_task_id", "orbo_remoteIP",
                                 "APPARMOR_HAT_ARRAY", "orboAccessToken", "HTTP_PROXY"}) {
    std::string dashed = name;
    std::replace(dashed.begin(), dashed.end(), '_', '-');
    headers.insert(headers.end(), {name + ": 10.0.0.1", dashed + ": 10.0.0.1"});
  }
  EXPECT_EQ(server().Get(Probe("trusted"), headers).body,
            Success(R"({"address":"127.0.0.1","task":false})"));
}

TEST_P(Responses, AreGivenForProgramsThePageAndTheClientOnly) {
  const HttpResponse page = server().Send("GET", "/webapi/share.html");
  EXPECT_EQ(page.status, 200);
  EXPECT_EQ(page.Headers("Content-Type"), Lines{"text/html; charset=utf-8"});
  EXPECT_EQ(page.Headers("X-Frame-Options"), Lines{"DENY"});
  for (const char* module : {"/webapi/webapi.mjs", "/webapi/webapi/parameter_line.mjs"}) {
    const HttpResponse script = server().Send("GET", module);
    EXPECT_EQ(script.status, 200) << module;
    EXPECT_EQ(script.Headers("Content-Type"), Lines{"text/javascript; charset=utf-8"}) << module;
  }
  const Lines groups[] = {
      {"/webapi/", "/webapi", "/", "/webapi/handlers/", "/webapi/webapi/"},
      {"/lib.def", "/entry.cgi", "/webapi/../outside.lib", "/webapi/%2e%2e/outside.lib",
       "/webapi../outside.lib"},
      {"/webapi/ORBO.Test.lib", "/webapi/handlers/libe2e_probe.so",
       "/webapi/lib/libwebapi-KEP5.so"},
      {"/webapi/%6cib.def", "/webapi//lib.def", "/webapi/webapi/../lib.def",
       "/webapi/x.cgi/../lib.def", "/webapi/x.cgi/..%2flib.def"},
      {"/webapi/lib.def%00.cgi", "/webapi/lib.def/x.cgi", "/webapi/lib.def?x=.cgi"},
      {"/webapi/share.html/x", "/webapi/xshare.html", "/webapi/x/share.html"},
  };
  for (const Lines& group : groups) {
    for (const std::string& target : group) {
      SCOPED_TRACE(target);
      const HttpResponse response = server().Send("GET", target);
      EXPECT_TRUE(response.status >= 400 && response.status < 500) << response.status;
      EXPECT_EQ(response.body.find("authLevel"), std::string::npos);
    }
  }
}

TEST_P(Responses, DoNotWaitForCallbacks) {
  const std::string marker = server().root().path() + "/finished";
  const HttpResponse response = server().Get(Probe("later"));
  EXPECT_EQ(ReadFile(marker), "");
  EXPECT_EQ(response.body, "{\"success\":true}\n");
  EXPECT_TRUE(response.closed);
  // The callback begins a second after the answer and takes three more.
  EXPECT_LT(response.seconds, 1.0);
  EXPECT_TRUE(WaitUntil([&marker] { return !ReadFile(marker).empty(); }, std::chrono::seconds(30)));
  EXPECT_EQ(ReadFile(marker), "in a session of its own\n");
}

}  // namespace

}  // namespace e2e
