// Who may call what: sessions and tokens that the command makes, shown as cookie, as
// "_sid" and as "tid".

#include <json/reader.h>
#include <json/value.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <vector>

#include "server_test.h"

namespace e2e {

namespace {

const Lines kForeign = {"Origin: http://elsewhere.example"};
// Of the right form, and of no session.
const std::string kNoSession = "s" + std::string(43, 'A');
const char* const kClasses[] = {"admin.local",  "admin.domain",  "admin.ldap",
                                "normal.local", "normal.domain", "normal.ldap"};

// A method of the API, or of one that stands beside it.
std::string Query(const std::string& method, const std::string& api = "") {
  return "api=ORBO.Test.Permission" + (api.empty() ? "" : "." + api) +
         "&version=1&method=" + method;
}

const std::string kWho = Query("who");
const std::string kOwn = Query("own");
const std::string kPrivileged = Query("who", "Privileged");

struct Row {
  std::string name;
  std::string query;
  std::string cookie;   // "" for none
  std::string form;     // "" for a GET request
  std::string outcome;  // the error's code, "0" for success, and the word of the refusal
  Lines headers = {};
};

class Permission : public ServerTest {
 protected:
  void SetUp() override {
    fs::create_directories(Path("/etc/orbo/privileges"));
    Configure("");
  }

  static std::string SessionFile(const std::string& sid) {
    return Path("/run/orbo/sessions/" + sid);
  }
  static void Configure(const std::string& lines) {
    std::ofstream(Path("/etc/orbo/platform.conf"))
        << "administrators=boss DOM\\boss boss@x\n"
        << (geteuid() == 0 ? "service_user=www-data\n" : "") << lines;
  }

  static std::string Open(const std::string& user, const std::string& options = "") {
    return Run("session open '" + user + "' " + options);
  }
  static void Age(const std::string& file, const std::string& seconds) {
    Shell("touch -d '" + seconds + " seconds ago' " + file);
  }

  static std::string Outcome(const Row& row) {
    Lines headers = row.headers;
    if (!row.cookie.empty()) {
      headers.push_back("Cookie: " + row.cookie);
    }
    headers.emplace_back("Content-Type: application/x-www-form-urlencoded");
    const HttpResponse response = server().Send(
        row.form.empty() ? "GET" : "POST", "/webapi/entry.cgi?" + row.query, headers, row.form);
    Json::Value body;
    std::istringstream(response.body) >> body;
    std::string outcome = body["success"].asBool() ? "0" : body["error"]["code"].asString();
    for (const std::string& word : response.Headers("x-request-error")) {
      outcome += " " + word;
    }
    return outcome;
  }
  static void Check(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
      EXPECT_EQ(row.outcome, Outcome(row))
          << row.name << ": " << row.query << " " << row.cookie << " " << row.form;
    }
  }
};
E2E_UNDER_EVERY_SERVER(Permission);

TEST_P(Permission, LevelDecidesWhetherARefusalCounts) {
  const std::string good = "id=" + Open("member");
  const std::string bad = "id=" + kNoSession;
  Check({{"checked", kWho, "", "", "119 unauth"},
         {"checked", kWho, bad, "", "105 noprivilege"},
         {"checked", kWho, good, "", "0"},
         {"ignored", Query("who", "Open"), "", "", "0 unauth"},
         {"ignored", Query("who", "Open"), bad, "", "0 noprivilege"},
         {"ignored", Query("who", "Open"), good, "", "0"},
         {"not checked", Query("who", "Free"), bad, "", "0"}});
}

TEST_P(Permission, ClassOfTheUserIsListedByTheApiOrByTheMethod) {
  const char* const users[] = {"boss", "DOM\\boss", "boss@x", "member", "DOM\\member", "member@x"};
  for (std::size_t user = 0; user < std::size(users); ++user) {
    const std::string cookie = "id=" + Open(users[user]);
    for (const char* listed : kClasses) {
      const char* const outcome = listed == kClasses[user] ? "0" : "105";
      Check({{users[user], Query("who", listed), cookie, "", outcome},
             {users[user], Query(listed), cookie, "", outcome}});
    }
  }
  Check({{"both", Query("normal.domain"), "id=" + Open("DOM\\member@x"), "", "0"}});
  for (const char* list : {"none", "empty", "text", "object", "odd"}) {
    Check({{"open to nobody", Query(list), "id=" + Open("boss"), "", "105"}});
  }
}

TEST_P(Permission, FirstRuleThatFailsIsTold) {
  const struct {
    const char* name;
    const char* settings;
    const char* options;
    const char* idle;
    Lines headers;
    const char* outcome;
  } rows[] = {
      {"own address", "", "--address ::ffff:127.0.0.1", "0", {}, "0"},
      {"another", "", "--address 192.0.2.2", "0", {}, "105 noprivilege"},
      {"free to move", "", "--address 192.0.2.2 --skip-address-check", "0", {}, "0"},
      {"all free", "address_check=no", "--address 192.0.2.2", "0", {}, "0"},
      {"timed out", "", "--timeout 10", "610", {}, "106 timeout"},
      {"by the system's time-out", "session_timeout=9", "", "550", {}, "106 timeout"},
      {"address before time", "", "--address 192.0.2.2", "9999", {}, "105 noprivilege"},
      {"site before address", "", "--address 192.0.2.2", "9999", kForeign, "119 unauth"},
      {"any site", "cross_site_check=no", "", "0", kForeign, "0"},
  };
  for (const auto& row : rows) {
    Configure(row.settings);
    const std::string sid = Open("member", row.options);
    Age(SessionFile(sid), row.idle);
    Check({{row.name, Query("idle"), "id=" + sid, "", row.outcome, row.headers},
           {row.name, kWho, "id=" + sid, "", row.outcome, row.headers}});
  }
}

TEST_P(Permission, OnlyActivityRenewsASession) {
  const std::string sid = Open("member");
  const struct {
    std::string query;
    std::string path;  // before the id
    bool renews;
    const char* idle = "300";
  } rows[] = {{kWho, "", true},
              {Query("idle"), "", false},  // "allowTimeout"
              {Query("who", "Free"), "", false},
              {Query("touch", "Free"), "", true},
              {Query("touch", "Free"), "", false, "86000"},  // timed out
              {Query("touch", "Free"), "./", false},
              {Query("touch", "Free"), "../sessions/", false}};
  for (const auto& row : rows) {
    Age(SessionFile(sid), row.idle);
    const auto before = fs::last_write_time(SessionFile(sid));
    Check({{"", row.query, "id=" + row.path + sid, "", "0"}});
    EXPECT_EQ(row.renews, fs::last_write_time(SessionFile(sid)) > before) << row.query << row.path;
  }
}

TEST_P(Permission, TokenOpensWhatItNamesUntilItEnds) {
  const std::string token =
      Run("token create member --api ORBO.Test.Permission:who,admin.local --expires 1d");
  const std::string tid = "&tid=" + token;
  const std::string changed = tid.substr(0, tid.size() - 1) + (tid.back() == 'A' ? 'Q' : 'A');
  const std::string sid = Open("boss");
  Check({{"named", kWho + tid, "", "", "0"},
         {"of another site's page", kWho + tid, "id=" + sid, "", "0", kForeign},
         {"besides a bad cookie", kWho + tid, "id=" + kNoSession, "", "0"},
         {"besides a bad _sid", kWho + tid + "&_sid=x", "", "", "105 noprivilege"},
         {"another method", Query("normal.local") + tid, "", "", "119 unauth"},
         {"by a session", Query("admin.local") + tid, "id=" + sid, "", "0"},
         {"class of the user", Query("admin.local") + tid, "", "", "105"},
         {"changed", kWho + changed, "", "", "119 unauth"},
         {"empty", kWho + "&tid=", "", "", "119 unauth"}});
  const std::string refused = server().Get(Query("who", "Open") + changed).body;
  EXPECT_NE(std::string::npos, refused.find("\"variable\":\"\"")) << refused;

  // The time that it ends at becomes one of long ago.
  const std::string id = token.substr(3, token.rfind('.') - 3);
  Shell("sed -i -E 's/(\"expires\":)[0-9]{3}/\\1/' " +
        Path("/var/lib/orbo/tokens/" + id + ".json"));
  Check({{"expired", kWho + tid, "", "", "119 unauth"}});
}

TEST_P(Permission, SpoiltSessionFilesOpenNothing) {
  const std::string good = SessionFile(Open("boss"));
  for (const char* spoil : {"rm $F; ln -s $GOOD $F", "rm $F; mkdir $F", "rm $F; mkfifo -m 666 $F",
                            "chmod 0 $F", "chmod 622 $F", "truncate -s -2 $F", "true > $F"}) {
    const std::string sid = Open("boss");
    Shell("F=" + SessionFile(sid) + " GOOD=" + good + "; " + spoil);
    Check({{spoil, kWho, "id=" + sid, "", "105 noprivilege"},
           {spoil, kWho, "", "_sid=" + sid, "105 noprivilege"}});
  }
}

TEST_P(Permission, IdsOfAnotherFormOpenNothing) {
  const std::string sid = Open("boss");
  Check({{"path", Query("idle"), "id=../sessions/" + sid, "", "105 noprivilege"},
         {"path", Query("idle"), "lang=x", "_sid=../sessions/" + sid, "105 noprivilege"},
         {"NUL", kWho, "id=" + sid + "%00", "", "105 noprivilege"},
         {"NUL first", kWho, "id=%00" + sid, "", "105 noprivilege"},
         {"NUL ends a parameter", kWho, "", "_sid=" + sid + "%00/../x", "0"},
         {"NUL first", kWho, "id=" + sid, "_sid=%00" + sid, "119 unauth"},
         {"empty", kWho, "id=" + sid, "_sid=", "119 unauth"},
         {"null", kWho, "id=" + sid, "_sid=null", "119 unauth"},
         {"number", kWho, "", "_sid=5", "119 unauth"}});
}

TEST_P(Permission, CookieOpensNothingForPagesOfOtherSites) {
  const std::string sid = Open("member");
  const std::string cookie = "id=" + sid;
  const std::string token = "&tid=" + Run("token create member --api ORBO.Test.Permission");
  Check({{"cookie", kWho, cookie, "", "119 unauth", kForeign},
         {"_sid", kWho, "", "_sid=" + sid, "0", kForeign},
         {"_sid for a cookie", kWho, "id=x", "_sid=" + sid, "0", kForeign},
         {"_sid that is the cookie", kWho, cookie, "_sid=" + sid, "0", kForeign},
         {"_sid of another", kWho, cookie, "_sid=" + kNoSession, "105 noprivilege", kForeign},
         {"a handler's id", kOwn + token, "", "other=" + sid, "0", kForeign},
         {"the cookie's", kOwn + token, cookie, "other=" + sid, "105", kForeign}});
}

TEST_P(Permission, PrivilegeIsHeldFromAnAddress) {
  const std::string file = Path("/etc/orbo/privileges/ORBO.Test");
  std::ofstream(file) << "user member 127.0.0.1\nuser boss 10.0.0.0/8\n";
  const std::string cookie = "id=" + Open("member");
  Check({{"held", kPrivileged, cookie, "", "0"},
         {"by a handler's own check", Query("own", "Privileged"), cookie,
          "other=" + cookie.substr(3), "0"},
         {"from elsewhere", kPrivileged, "id=" + Open("boss"), "", "105"},
         {"missing", kPrivileged, "id=" + Open("other"), "", "105"}});
  const std::string who = server().Get(kPrivileged, {"Cookie: " + cookie}).body;
  EXPECT_NE(std::string::npos, who.find("\"privileged\":true")) << who;
  fs::remove(file);
  Check({{"of no file", kPrivileged, cookie, "", "105"}});
}

TEST_P(Permission, HandlersSeeWhoCalls) {
  const std::string sid =
      Open("nobody", "--timeout 7 --language fre --application Desk --skip-address-check");
  EXPECT_EQ(Success(R"({"admin":false,"any_address":true,"application":"Desk","authorized":true,)"
                    R"("classes":63,"file":")" +
                    SessionFile(sid) +
                    R"(","language":"fre","privileged":false,"timed_out":false,"timeout":7,)"
                    R"("uid":65534,"user":"nobody","variable":"nobody"})"),
            server().Get(kWho, {"Cookie: id=" + sid}).body);
  EXPECT_EQ(Success(R"({"admin":false,"any_address":true,"application":"","authorized":false,)"
                    R"("classes":7,"file":"","language":"enu","privileged":false,)"
                    R"("timed_out":true,"timeout":0,"uid":4294967295,"user":"",)"
                    R"("variable":"unset"})"),
            server().Get(Query("who", "Free"), {"Cookie: id=" + sid}).body);
}

TEST_P(Permission, HandlersOwnCheckKnowsOnlyOneRefusal) {
  const std::string sid = Open("member");
  const std::string late = Open("member");
  Age(SessionFile(late), "9999");
  Check({{"valid", kOwn, "id=" + sid, "other=" + sid, "0"},
         {"none", kOwn, "id=" + sid, "", "105"},
         {"unknown", kOwn, "id=" + sid, "other=" + kNoSession, "105"},
         {"timed out", kOwn, "id=" + sid, "other=" + late, "105"},
         {"not of the API's list", Query("own", "Admins"), "id=" + sid, "other=" + sid, "105"}});
}

TEST_P(Permission, ExplanationsComeToTheSameCode) {
  std::ofstream(Path("/etc/orbo/privileges/ORBO.Test")) << "user boss 127.0.0.0/8\n";
  const std::string permission = "ORBO.Test.Permission";
  const struct {
    std::string api;
    const char* method;
    int version = 1;
  } calls[] = {
      {permission, "who"},
      {permission, "normal.domain"},
      {permission, "none"},
      {permission, "odd"},
      {permission, "nothing"},
      {permission, "who", 2},
      {permission + ".admin.local", "who"},
      {permission + ".Free", "who"},
      {permission + ".Open", "who"},
      {permission + ".Privileged", "who"},
      {permission + ".Nowhere", "who"},
      {"ORBO.Test.Probe", "unlisted"},
      {"ORBO.Test.Probe", "echo", 2},
      {"ORBO.Test.Missing", "echo"},
      {"ORBO.Test.NoTable", "echo"},
      {"../outside", "echo"},
      {"", "echo"},
  };
  for (const char* user : {"", "boss", "DOM\\member"}) {
    const std::string cookie = *user != '\0' ? "id=" + Open(user) : "";
    for (const auto& call : calls) {
      const std::string version = std::to_string(call.version);
      Json::Value explained;
      std::istringstream(Run("explain '" + call.api + "' " + call.method + " --version " + version +
                             " --user '" + user + "' --address 127.0.0.1 --json || true")) >>
          explained;
      const std::string query =
          "api=" + call.api + "&version=" + version + "&method=" + call.method;
      const std::string outcome = Outcome({"", query, cookie, "", ""});
      EXPECT_EQ(explained["code"].asString(), outcome.substr(0, outcome.find(' ')))
          << user << " " << query;
    }
  }
}

TEST_P(Permission, OneSessionServesManyRequestsAtOnce) {
  const std::string sid = Open("member");
  const std::string before = ReadFile(SessionFile(sid));
  std::vector<std::thread> clients;
  for (int i = 0; i < 64; ++i) {
    clients.emplace_back([&sid] { Check({{"", kWho, "id=" + sid, "", "0"}}); });
  }
  for (std::thread& client : clients) {
    client.join();
  }
  EXPECT_EQ(before, ReadFile(SessionFile(sid)));
}

}  // namespace

}  // namespace e2e
