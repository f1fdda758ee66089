// Logging in and out over the web: who gets a session, what it opens, and what a
// client cannot do to it.

#include <json/reader.h>
#include <json/value.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>

#include "server_test.h"

namespace e2e {

namespace {

constexpr char kOpen[] = "api=ORBO.Session&version=1&method=open";
// "correct horse", by the cheapest yescrypt.
constexpr char kHash[] = ":$y$j75$abcdefgh$Jakf0CHhzdQOivqISxvBXCIRIaxY0Fs1wJGsJSurry/\n";
constexpr char kPassword[] = "correct+horse";

std::string Manage(const std::string& method) {
  return "api=ORBO.Session&version=1&method=" + method;
}

std::string Cookie(const std::string& sid) { return "Cookie: id=" + sid; }

Json::Value Parse(const HttpResponse& response) {
  Json::Value value;
  std::istringstream(response.body) >> value;
  return value;
}

// The error's code; 0 for success.
int Code(const HttpResponse& response) {
  const Json::Value body = Parse(response);
  return body["success"].asBool() ? 0 : body["error"]["code"].asInt();
}

class Sessions : public ServerTest {
 protected:
  // People: ada is an administrator, the others are not; each test that fails to log
  // in on purpose has one of its own.
  void SetUp() override {
    const fs::path etc = Path("/etc/orbo");
    fs::create_directories(etc);
    Configure();
    if (fs::exists(etc / "passwords")) {
      return;
    }
    std::ofstream passwords(etc / "passwords");
    for (const char* user : {"ada", "ben", "cleo", "dan"}) {
      passwords << user << kHash;
    }
    passwords.close();
    fs::permissions(etc / "passwords", fs::perms::owner_read | fs::perms::owner_write);
    server().root().HandOver();
  }

  static void Configure(const std::string& lines = "") {
    std::ofstream(server().root().path() + "/etc/orbo/platform.conf")
        << "administrators=ada\nlogin_address_attempts=10000\n"
        << lines;
  }

  static HttpResponse Post(const std::string& form, const Lines& headers = {},
                           const std::string& query = "") {
    Lines all = headers;
    all.push_back("Content-Type: application/x-www-form-urlencoded");
    return server().Send("POST", "/webapi/entry.cgi" + query, all, form);
  }
  static HttpResponse Open(const std::string& user, const Lines& headers = {},
                           const std::string& password = kPassword) {
    return Post(std::string(kOpen) + "&user=" + user + "&password=" + password, headers);
  }
  static std::string Login(const std::string& user, const Lines& headers = {}) {
    const HttpResponse response = Open(user, headers);
    EXPECT_EQ(0, Code(response)) << response.body;
    return Parse(response)["data"]["sid"].asString();
  }
  static HttpResponse Call(const std::string& method, const std::string& sid) {
    return server().Get(Manage(method), {Cookie(sid)});
  }
};
E2E_UNDER_EVERY_SERVER(Sessions);

TEST_P(Sessions, OpenShowAndClose) {
  const HttpResponse opened =
      Open("ada", {"X-Forwarded-Proto: http"}, "correct+horse&application=Desk&language=fre");
  const Json::Value data = Parse(opened)["data"];
  const std::string sid = data["sid"].asString();
  ASSERT_GE(sid.size(), 32U) << opened.body;
  EXPECT_EQ("ada", data["user"].asString());
  EXPECT_TRUE(data["is_admin"].asBool());
  EXPECT_EQ(opened.Headers("Set-Cookie"),
            Lines{"id=" + sid + "; path=/; httponly; samesite=Strict"});
  for (const std::string& word : opened.Headers("x-request-error")) {
    EXPECT_EQ("", word) << "lighttpd leaves a line without a value out";
  }
  EXPECT_EQ(opened.body.find("horse"), std::string::npos);

  const HttpResponse shown = Call("show", sid);
  const Json::Value facts = Parse(shown)["data"];
  for (const char* number : {"created", "last_active", "timeout"}) {
    EXPECT_GT(facts[number].asInt64(), 0) << shown.body;
  }
  EXPECT_EQ(8U, facts.size()) << shown.body;
  EXPECT_EQ("ada Desk fre 127.0.0.1",
            facts["user"].asString() + " " + facts["application"].asString() + " " +
                facts["language"].asString() + " " + facts["address"].asString());
  EXPECT_EQ(0, Code(Post(Manage("show") + "&_sid=" + sid))) << "the id as a parameter";

  const HttpResponse closed = Call("close", sid);
  EXPECT_EQ(0, Code(closed)) << closed.body;
  EXPECT_EQ(closed.Headers("Set-Cookie"),
            Lines{"id=deleted; path=/; expires=Thu, 01-Jan-1970 00:00:01 GMT; httponly; "
                  "samesite=Strict"});
  EXPECT_EQ(105, Code(Call("show", sid)));
  EXPECT_EQ(119, Code(server().Get(Manage("close"))));

  const HttpResponse secure = Open("ben", {"X-Forwarded-Proto: https"});
  EXPECT_NE(secure.Headers("Set-Cookie").at(0).find("; path=/; secure; "), std::string::npos);
}

TEST_P(Sessions, WrongLoginsOpenNone) {
  const std::string form = std::string(kOpen) + "&user=ben&password=correct+horse";
  const struct {
    const char* name;
    const char* method;
    std::string query;
    std::string form;
    int status;
    int code;
  } rows[] = {
      {"wrong password", "POST", "", std::string(kOpen) + "&user=cleo&password=wrong", 200, 1104},
      {"unknown user", "POST", "", std::string(kOpen) + "&user=nobody&password=correct+horse", 200,
       1104},
      {"no password", "POST", "", std::string(kOpen) + "&user=ben", 200, 1101},
      {"number as password", "POST", "", std::string(kOpen) + "&user=ben&password=5", 200, 1101},
      {"bad language", "POST", "", form + "&language=en", 200, 1101},
      {"GET", "GET", "?" + form, "", 405, 1102},
      {"password in URL", "POST", "?password=correct+horse", form, 200, 1103},
      {"name of it escaped", "POST", "?p%61ssword=correct+horse", form, 200, 1103},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const HttpResponse response =
        server().Send(row.method, "/webapi/entry.cgi" + row.query,
                      {"Content-Type: application/x-www-form-urlencoded"}, row.form);
    EXPECT_EQ(row.status, response.status);
    EXPECT_EQ(row.code, Code(response)) << response.body;
    EXPECT_EQ(response.Headers("Set-Cookie"), Lines{});
  }
  const std::string entry = "api=ORBO.Entry.Request&version=1&method=request";
  const std::string list = R"([{"api":"ORBO.Session","version":1,"method":"open","user":"ben",)"
                           R"("password":"correct horse"}])";
  const auto first = [](const HttpResponse& response) {
    return Parse(response)["data"]["result"][0]["error"]["code"].asInt();
  };
  EXPECT_EQ(1102, first(server().Get(entry + "&compound=" + Escape(list))));
  EXPECT_EQ(1103, first(Post("x=1", {}, "?" + entry + "&compound=" + Escape(list))));
  EXPECT_EQ(0, first(Post(entry + "&compound=" + Escape(list))));
  EXPECT_EQ(1108, Code(Open("ben", {"Origin: http://elsewhere.example"})));
  EXPECT_EQ(0, Code(Open("ben", {"Origin: http://" + server().Host()})));
}

TEST_P(Sessions, IdOfTheClientIsNeverAdopted) {
  const std::string first = Login("ben");
  std::string unknown = first;
  unknown.back() = unknown.back() == 'A' ? 'Q' : 'A';
  for (const std::string& brought : {unknown, std::string("chosen")}) {
    EXPECT_NE(brought, Login("ben", {Cookie(brought)}));
    const HttpResponse as_parameter = Open("ben", {}, "correct+horse&_sid=" + brought);
    EXPECT_EQ(0, Code(as_parameter)) << as_parameter.body;
    EXPECT_NE(brought, Parse(as_parameter)["data"]["sid"].asString());
    EXPECT_EQ(105, Code(Call("show", brought)));
  }
  EXPECT_EQ(0, Code(Call("show", first)));

  const std::string second = Login("ben", {Cookie(first)});
  EXPECT_NE(first, second);
  EXPECT_EQ(105, Code(Call("show", first))) << "ended by the next login";
  Login("ada", {Cookie(second)});
  EXPECT_EQ(0, Code(Call("show", second))) << "another user's stays";
}

TEST_P(Sessions, WhatOthersBroughtDoesNotCloseTheCookiesSession) {
  const std::string own = Login("ben");
  const std::string brought = Login("ada");
  const HttpResponse closed = server().Get(Manage("close") + "&_sid=" + brought, {Cookie(own)});
  EXPECT_EQ(0, Code(closed));
  EXPECT_EQ(closed.Headers("Set-Cookie"), Lines{});
  EXPECT_EQ(0, Code(Call("show", own)));
  // Who is let in by a token has no session, whatever the cookie says.
  const std::string elsewhere = Run("session open ada --address 198.51.100.1");
  const std::string token = Run("token create ada --api ORBO.Session:close");
  EXPECT_EQ(1107, Code(server().Get(Manage("close") + "&tid=" + token, {Cookie(elsewhere)})));
}

TEST_P(Sessions, EveryMethodButOpenNeedsTheCheckToPass) {
  const std::string late = Login("ada");
  const std::string file = server().root().path() + "/run/orbo/sessions/" + late;
  fs::last_write_time(file, fs::file_time_type::clock::now() - std::chrono::hours(1));
  for (const char* method : {"close", "show", "list", "kill"}) {
    EXPECT_EQ(106, Code(Call(method, late))) << method;
  }
  EXPECT_EQ(0, Code(Open("ben", {Cookie(late)}))) << "open is there for who has timed out";
  // The first check of a request decides for all of its calls.
  const std::string list = R"([{"api":"ORBO.Session","version":1,"method":"close"},)"
                           R"({"api":"ORBO.Session","version":1,"method":"list"}])";
  const HttpResponse both =
      Post("api=ORBO.Entry.Request&version=1&method=request&compound=" + Escape(list),
           {Cookie(Login("ada"))});
  EXPECT_FALSE(Parse(both)["data"]["has_fail"].asBool()) << both.body;
}

TEST_P(Sessions, RepeatedFailuresLock) {
  Configure("login_attempts=1\n");
  EXPECT_EQ(1104, Code(Open("dan", {}, "wrong")));
  const HttpResponse locked = Open("dan");
  EXPECT_EQ(429, locked.status);
  const int wait = Parse(locked)["error"]["errors"]["retry_after"].asInt();
  EXPECT_TRUE(wait > 200 && wait <= 300) << wait;
  EXPECT_EQ(locked.Headers("Retry-After"), Lines{std::to_string(wait)});
  EXPECT_EQ(1105, Code(locked));
  EXPECT_EQ(0, Code(Open("ben"))) << "nobody else is held up";
}

TEST_P(Sessions, AdministratorsListAndEndSessions) {
  const std::string admin = Login("ada");
  const std::string user = Login("cleo");
  for (const char* method : {"list", "kill"}) {
    EXPECT_EQ(105, Code(Call(method, user))) << method;
    EXPECT_EQ(119, Code(server().Get(Manage(method)))) << method;
  }

  const HttpResponse listed = Call("list", admin);
  EXPECT_EQ(std::string::npos, listed.body.find(user)) << "ids are secrets";
  EXPECT_EQ(std::string::npos, listed.body.find(admin));
  std::string handle;
  const Json::Value data = Parse(listed)["data"];
  for (const Json::Value& session : data["sessions"]) {
    if (session["user"].asString() == "cleo") {
      handle = session["handle"].asString();
    }
    EXPECT_LE(session["is_own"].asBool(), session["user"].asString() == "ada");
  }
  ASSERT_FALSE(handle.empty()) << listed.body;
  EXPECT_EQ(105, Code(Call("show", handle))) << "a handle opens nothing";

  EXPECT_EQ(1102, Code(server().Get(Manage("kill") + "&handle=" + handle, {Cookie(admin)})));
  EXPECT_EQ(1101, Code(Post(Manage("kill"), {Cookie(admin)})));
  EXPECT_EQ(1107, Code(Post(Manage("kill") + "&handle=" + user, {Cookie(admin)})));
  EXPECT_EQ(105, Code(Post(Manage("kill") + "&handle=" + handle, {Cookie(user)})));
  EXPECT_EQ(0, Code(Post(Manage("kill") + "&handle=" + handle, {Cookie(admin)})));
  EXPECT_EQ(105, Code(Call("show", user)));
  EXPECT_EQ(1107, Code(Post(Manage("kill") + "&handle=" + handle, {Cookie(admin)})));
  EXPECT_EQ(0, Code(Call("show", admin)));
}

}  // namespace

}  // namespace e2e
