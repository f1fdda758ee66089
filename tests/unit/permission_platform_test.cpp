#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>

#include "platform/cgi.h"
#include "platform/linux/address.h"
#include "platform/linux/fact_cache.h"
#include "platform/linux/random.h"
#include "platform/linux/session_store.h"
#include "platform/users.h"
#include "unit/LogCapture.h"
#include "unit/WebAPIDirectory.h"

namespace ORBO {
namespace {

namespace fs = std::filesystem;

using Variables = std::map<std::string, std::string>;

// Sets variables of the environment while it lives.
class Environment {
 public:
  explicit Environment(const Variables& variables) : variables_(variables) {
    for (const auto& [name, value] : variables_) {
      setenv(name.c_str(), value.c_str(), 1);
    }
  }
  ~Environment() {
    for (const auto& variable : variables_) {
      unsetenv(variable.first.c_str());
    }
  }
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;

 private:
  Variables variables_;
};

// With a root directory of its own.
class PermissionPlatform : public testing::Test {
 protected:
  static void Write(const std::string& path, const std::string& text) {
    const fs::path file = std::string(std::getenv("WEBAPI_ROOT")) + path;
    fs::create_directories(file.parent_path());
    std::ofstream(file) << text;
  }
  static void Configure(const std::string& text) { Write("/etc/orbo/platform.conf", text); }

  // Puts the file's last modification `seconds` into the past.
  static void SetAge(const std::string& path, std::int64_t seconds) {
    timespec times[2] = {};
    times[0].tv_sec = times[1].tv_sec = static_cast<time_t>(std::time(nullptr) - seconds);
    ASSERT_EQ(0, utimensat(AT_FDCWD, path.c_str(), times, 0));
  }

  static std::string RemoteIP() {
    char text[65] = {};
    return OrboCgiGetRemoteIP(text, sizeof text) != 0 ? text : "";
  }

  WebAPIDirectory root_;
  LogCapture log_;
};

// The session of a user at 192.0.2.1.
class SessionCheck : public PermissionPlatform {
 protected:
  SessionCheck() : environment_(Variables{{"REMOTE_ADDR", "192.0.2.1"}}) {
    session_.user = "alice";
    session_.address = "192.0.2.1";
    session_.timeout = 15;
  }
  ~SessionCheck() override { OrboCgiFree(&cgi_); }

  std::string Make() const {
    std::string id;
    EXPECT_TRUE(CreateSession(session_, id));
    return id;
  }

  static std::string Path(const std::string& id) { return OrboCgiSessionDirectory() + "/" + id; }

  static void Age(const std::string& id, std::int64_t seconds) { SetAge(Path(id), seconds); }

  static std::int64_t Idle(const std::string& id) {
    struct stat status = {};
    EXPECT_EQ(0, stat(Path(id).c_str(), &status));
    return std::time(nullptr) - status.st_mtim.tv_sec;
  }

  int Check(const std::string& id, bool allow_timeout = false) {
    const OrboCgiAuthOptions options{15, allow_timeout ? 1 : 0};
    return OrboCgiIsAuthorizedEx(&cgi_, id.c_str(), user_, sizeof user_, &options, 0);
  }

  std::string Option(int option) const {
    const char* const text = OrboCgiGetOption(&cgi_, option);
    return text != nullptr ? text : "none";
  }

  Environment environment_;
  Session session_;
  OrboCgi cgi_;
  char user_[493] = "unset";
};

TEST_F(SessionCheck, AValidSessionGivesItsFacts) {
  session_.application = "Files";
  session_.webapi = "{}";
  session_.language = "fra";
  const std::string id = Make();
  Age(id, 600);
  EXPECT_EQ(1, Check(id));
  EXPECT_STREQ("alice", user_);
  EXPECT_EQ(Path(id), cgi_.session_file);
  EXPECT_EQ("Files", Option(kCgiOptionApplication));
  EXPECT_EQ("{}", Option(kCgiOptionWebAPI));
  EXPECT_EQ("15", Option(kCgiOptionTimeout));
  EXPECT_EQ("none", Option(kCgiOptionSkipCheckIP));
  EXPECT_EQ("fra", OrboCgiGetLang(&cgi_));
  EXPECT_LE(Idle(id), 5);
  EXPECT_EQ(-2, Check("s" + std::string(43, 'A')));
  EXPECT_STREQ("", user_);
  EXPECT_EQ("", cgi_.session_file);
  EXPECT_EQ("none", Option(kCgiOptionTimeout));
  EXPECT_EQ("enu", OrboCgiGetLang(&cgi_));
}

TEST_F(SessionCheck, OnlyACallThatCountsRenews) {
  const std::string id = Make();
  Age(id, 600);
  EXPECT_EQ(1, Check(id, true));
  OrboCgiInitEx(&cgi_, 15, true, "current.users", "");
  EXPECT_EQ(1, Check(id));
  EXPECT_GE(Idle(id), 600);
  Age(id, 1000);
  EXPECT_EQ(-1, Check(id, true));
  EXPECT_EQ(-1, Check(id));
  EXPECT_STREQ("", user_);
  EXPECT_GE(Idle(id), 1000);
}

TEST_F(SessionCheck, WhatIsNoFileOfASessionIsRefused) {
  const std::string id = Make();
  EXPECT_EQ(-2, Check(""));
  EXPECT_EQ(-2, Check("../sessions/" + id));
  EXPECT_EQ(-2, OrboCgiIsAuthorizedEx(&cgi_, nullptr, user_, sizeof user_, nullptr, 0));
  char small[5];
  EXPECT_EQ(-4, OrboCgiIsAuthorizedEx(&cgi_, id.c_str(), small, sizeof small, nullptr, 0));
  EXPECT_STREQ("", small);
  std::ofstream(Path(id)) << "{";
  EXPECT_EQ(-4, Check(id));
}

TEST_F(SessionCheck, TheFirstRuleThatFailsIsTold) {
  const struct {
    const char* name;
    const char* conf;
    const char* address;  // where the session was made
    bool skip;
    std::int64_t idle;
    const char* origin;
    int result;
  } rows[] = {
      {"all is well", "", "192.0.2.1", false, 0, "", 1},
      {"mapped address", "", "::ffff:192.0.2.1", false, 0, "", 1},
      {"made nowhere", "", "", false, 0, "", 1},
      {"another address", "", "192.0.2.2", false, 0, "", -3},
      {"no address", "", "here", false, 0, "", -3},
      {"free to move", "", "192.0.2.2", true, 0, "", 1},
      {"all free to move", "address_check=no", "192.0.2.2", false, 0, "", 1},
      {"a word that is no switch", "address_check=off", "192.0.2.2", false, 0, "", -3},
      {"timed out", "", "192.0.2.1", false, 1000, "", -1},
      {"address before time", "", "192.0.2.2", false, 1000, "", -3},
      {"site before address", "", "192.0.2.2", false, 1000, "http://evil", -5},
      {"sites unchecked", "cross_site_check=no", "192.0.2.1", false, 0, "http://evil", 1},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Configure(row.conf);
    session_.address = row.address;
    session_.skip_address_check = row.skip;
    const std::string id = Make();
    Age(id, row.idle);
    const Environment request(
        Variables{{"HTTP_COOKIE", "id=" + id}, {"HTTP_HOST", "nas"}, {"HTTP_ORIGIN", row.origin}});
    OrboCgiInit("", &cgi_);
    OrboCgiLoadInCookies(&cgi_);
    EXPECT_EQ(row.result, Check(id));
    EXPECT_EQ(row.result == 1, *user_ != '\0');
    OrboCgiFree(&cgi_);
  }
}

TEST_F(SessionCheck, ACookieOpensNothingForPagesOfOtherSites) {
  const std::string id = Make();
  const struct {
    const char* name;
    Variables request;
    int result;
  } rows[] = {
      {"no browser", {{"HTTP_HOST", "nas"}}, 1},
      {"own page", {{"HTTP_HOST", "nas:5000"}, {"HTTP_ORIGIN", "http://nas:5000"}}, 1},
      {"own page, default port", {{"HTTP_HOST", "NAS"}, {"HTTP_ORIGIN", "http://nas:80"}}, 1},
      {"own page, IPv6", {{"HTTP_HOST", "[::1]:80"}, {"HTTP_ORIGIN", "http://[::1]"}}, 1},
      {"own page, https",
       {{"HTTPS", "on"}, {"HTTP_HOST", "nas:443"}, {"HTTP_ORIGIN", "https://nas"}},
       1},
      {"another port", {{"HTTP_HOST", "nas"}, {"HTTP_ORIGIN", "http://nas:8080"}}, -5},
      {"another scheme", {{"HTTP_HOST", "nas"}, {"HTTP_ORIGIN", "https://nas"}}, -5},
      {"the other scheme's port", {{"HTTP_HOST", "nas:443"}, {"HTTP_ORIGIN", "http://nas"}}, -5},
      {"another host", {{"HTTP_HOST", "nas"}, {"HTTP_ORIGIN", "http://nas.evil"}}, -5},
      {"our name in front", {{"HTTP_HOST", "nas"}, {"HTTP_ORIGIN", "http://nas@evil"}}, -5},
      {"no origin", {{"HTTP_HOST", "nas"}, {"HTTP_ORIGIN", "null"}}, -5},
      {"host and origin empty", {{"HTTP_HOST", ""}, {"HTTP_ORIGIN", "http://"}}, -5},
      {"host unknown", {{"HTTP_ORIGIN", "http://nas"}}, -5},
      {"two", {{"HTTP_HOST", "nas"}, {"HTTP_ORIGIN", "http://nas http://evil"}}, -5},
      {"fetched by own page", {{"HTTP_SEC_FETCH_SITE", "same-origin"}}, 1},
      {"typed by the user", {{"HTTP_SEC_FETCH_SITE", "none"}}, 1},
      {"fetched by another site", {{"HTTP_SEC_FETCH_SITE", "cross-site"}}, -5},
      {"fetched by a neighbour", {{"HTTP_SEC_FETCH_SITE", "same-site"}}, -5},
      {"fetched by who knows", {{"HTTP_SEC_FETCH_SITE", "x"}}, -5},
      {"either is enough",
       {{"HTTP_HOST", "nas"}, {"HTTP_ORIGIN", "http://nas"}, {"HTTP_SEC_FETCH_SITE", "cross-site"}},
       -5},
      {"https to a trusted proxy",
       {{"REMOTE_ADDR", "192.0.2.9"},
        {"HTTP_X_FORWARDED_FOR", "192.0.2.1"},
        {"HTTP_X_FORWARDED_PROTO", "https"},
        {"HTTP_HOST", "nas"},
        {"HTTP_ORIGIN", "https://nas"}},
       1},
      {"https to nobody we trust",
       {{"REMOTE_ADDR", "192.0.2.1"},
        {"HTTP_X_FORWARDED_PROTO", "https"},
        {"HTTP_HOST", "nas"},
        {"HTTP_ORIGIN", "https://nas"}},
       -5},
  };
  Configure("trusted_proxies=192.0.2.9");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const Environment address(Variables{{"REMOTE_ADDR", "192.0.2.1"}});
    const Environment request(row.request);
    for (const char* cookie : {"id=", "lang=x; id="}) {
      const Environment cookies(Variables{{"HTTP_COOKIE", cookie + id}});
      OrboCgiInit("", &cgi_);
      OrboCgiLoadInCookies(&cgi_);
      EXPECT_EQ(row.result, Check(id));
      OrboCgi second;
      OrboCgiInitEx(&second, 15, false, "current.users", "");
      std::swap(cgi_, second);
      EXPECT_EQ(row.result, Check(id));
      std::swap(cgi_, second);
      OrboCgiFree(&cgi_);
    }
  }
}

TEST_F(SessionCheck, AnIdThatAPageMustKnowIsItsProof) {
  const std::string id = Make();
  const struct {
    const char* name;
    std::string client;  // Cookie header
    std::string loaded;  // with "_sid"
    int result;
  } rows[] = {
      {"cookie", "id=" + id, "id=" + id, -5},
      {"_sid", "", "id=" + id, 1},
      {"_sid besides another cookie", "id=x", "abandoned=x; id=" + id, 1},
      {"_sid that is the cookie", "id=" + id, "abandoned=" + id + "; id=" + id, 1},
      {"cookie, and another _sid", "grid=1; id=" + id, "grabandoned=1; id=" + id + "; id=x", -5},
      {"a handler's own", "id=x", "id=x", 1},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const Environment request(Variables{{"HTTP_SEC_FETCH_SITE", "cross-site"}});
    const Environment client(Variables{{"HTTP_COOKIE", row.client}});
    OrboCgiInit("", &cgi_);
    const Environment loaded(Variables{{"HTTP_COOKIE", row.loaded}});
    OrboCgiLoadInCookies(&cgi_);
    EXPECT_EQ(row.client, cgi_.client_cookie_line);
    EXPECT_EQ(row.result, Check(id));
    // A handler's check, before and after another record came and went.
    for (int i = 0; i < 2; ++i) {
      OrboCgi own;
      OrboCgiInitEx(&own, 15, false, "current.users", "");
      EXPECT_EQ(row.result,
                OrboCgiIsAuthorizedEx(&own, id.c_str(), user_, sizeof user_, nullptr, 0));
      OrboCgiInit("", &own);
      OrboCgiFree(&own);
    }
    OrboCgiFree(&cgi_);
  }
}

TEST_F(PermissionPlatform, OnlyTrustedProxiesAreBelievedAboutTheClient) {
  const std::string list = "trusted_proxies = 10.0.0.1, 10.1.0.0/16 fd00::/8,bad/8,";
  const struct {
    const char* name;
    std::string conf;
    const char* peer;
    const char* header;
    const char* client;
  } rows[] = {
      {"nobody is trusted", "", "10.0.0.1", "192.0.2.7", "10.0.0.1"},
      {"not this one", list, "10.0.0.2", "192.0.2.7", "10.0.0.2"},
      {"a proxy", list, "10.0.0.1", "192.0.2.7", "192.0.2.7"},
      {"a mapped proxy", list, "::ffff:10.0.0.1", "192.0.2.7", "192.0.2.7"},
      {"an IPv6 proxy", list, "fd12::1", "2001:db8::0:7", "2001:db8::7"},
      {"made up in front", list, "10.0.0.1", "127.0.0.1, 192.0.2.7", "192.0.2.7"},
      {"two proxies", list, "10.0.0.1", "192.0.2.7,10.1.2.3", "192.0.2.7"},
      {"made up before two proxies", list, "10.0.0.1", "::1, 192.0.2.7, 10.1.2.3", "192.0.2.7"},
      {"a client that is a proxy", list, "10.0.0.1", "10.1.0.9, 10.1.2.3", "10.1.0.9"},
      {"rubbish in front", list, "10.0.0.1", "%%, 192.0.2.7", "192.0.2.7"},
      {"rubbish at the end", list, "10.0.0.1", "192.0.2.7, x", "10.0.0.1"},
      {"rubbish behind a proxy", list, "10.0.0.1", "x, 10.1.2.3", "10.0.0.1"},
      {"with a port", list, "10.0.0.1", "192.0.2.7:80", "10.0.0.1"},
      {"empty", list, "10.0.0.1", "", "10.0.0.1"},
      {"a comma", list, "10.0.0.1", "192.0.2.7,", "10.0.0.1"},
      {"no peer", list, "", "192.0.2.7", ""},
      {"no address of a peer", list, "unix:", "192.0.2.7", ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Configure(row.conf);
    const Environment request(
        Variables{{"REMOTE_ADDR", row.peer}, {"HTTP_X_FORWARDED_FOR", row.header}});
    EXPECT_EQ(row.client, RemoteIP());
  }
  EXPECT_TRUE(log_.Has("bad/8"));
}

TEST(Address, RangesHoldTheirAddresses) {
  const struct {
    const char* range;
    const char* address;
    bool holds;
  } rows[] = {
      {"10.0.0.0/8", "10.255.0.1", true},
      {"10.0.0.0/8", "11.0.0.1", false},
      {"10.0.0.0/8", "::ffff:10.1.1.1", true},
      {"192.0.2.128/25", "192.0.2.129", true},
      {"192.0.2.128/25", "192.0.2.127", false},
      {"192.0.2.1", "192.0.2.1", true},
      {"192.0.2.1", "192.0.2.0", false},
      {"0.0.0.0/0", "203.0.113.9", true},
      {"0.0.0.0/0", "2001:db8::1", false},
      {"::/0", "203.0.113.9", true},
      {"fe80::/10", "febf::1%eth0", true},
      {"fe80::/10", "fec0::1", false},
      {"::1/128", "::1", true},
      {"10.0.0.0/33", "10.0.0.0", false},
      {"::/129", "::", false},
      {"10.0.0.0/", "10.0.0.0", false},
      {"10.0.0.0/-1", "10.0.0.0", false},
      {"10.0.0.0/8x", "10.0.0.0", false},
      {"10/8", "10.0.0.0", false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.range) + " " + row.address);
    AddressRange range;
    Address address;
    ASSERT_TRUE(ParseAddress(row.address, address));
    EXPECT_EQ(row.holds, ParseAddressRange(row.range, range) && Contains(range, address));
  }
  Address address;
  EXPECT_FALSE(ParseAddress(std::string("10.0.0.1\0x", 10), address));
  EXPECT_FALSE(ParseAddress("10.0.0.1%eth0", address));
}

TEST_F(PermissionPlatform, AnswersOfTheNameServiceAreKeptForHalfAMinute) {
  bool fact = false;
  KeepFact("q", true);
  EXPECT_FALSE(RecallFact("q", fact)) << "without sessions nothing is kept";
  fs::create_directories(OrboCgiSessionDirectory());
  for (const bool answer : {true, false}) {
    KeepFact("q", answer);
    EXPECT_TRUE(RecallFact("q", fact));
    EXPECT_EQ(answer, fact);
  }
  EXPECT_FALSE(RecallFact("r", fact));
  const std::string path = OrboCgiSessionDirectory() + "/.facts/" + Base64Url("q");
  for (const std::int64_t age : {40, -40}) {
    SetAge(path, age);
    EXPECT_FALSE(RecallFact("q", fact)) << age;
  }
  SetAge(path, 20);
  EXPECT_TRUE(RecallFact("q", fact));
  if (geteuid() == 0) {
    ASSERT_EQ(0, chown(path.c_str(), 65534, 65534));
    EXPECT_FALSE(RecallFact("q", fact));
  }
  KeepFact(std::string(500, 'x'), true);
  EXPECT_FALSE(RecallFact(std::string(500, 'x'), fact));
  SetAge(path, 40);
  SweepFacts();
  EXPECT_FALSE(fs::exists(path));
}

TEST_F(PermissionPlatform, AdministratorsAreNamedOrOfTheGroup) {
  // Of any system: a user with an account, and the name of its group.
  const struct {
    const char* name;
    std::string conf;
    const char* user;
    int result;
  } rows[] = {
      {"user 0", "", "root", 1},
      {"an account", "", "nobody", 0},
      {"no account", "", "no such user", 0},
      {"no name", "", "", 0},
      {"named", "administrators = alice, DOM\\bob carol", "alice", 1},
      {"named among others", "administrators = alice, DOM\\bob carol", "DOM\\bob", 1},
      {"more than one name", "administrators = alice, DOM\\bob carol", "DOM\\bob carol", 0},
      {"another case", "administrators = alice", "Alice", 0},
      {"part of a name", "administrators = alice", "ali", 0},
      {"of the group", "administrators_group = nogroup", "nobody", 1},
      {"of another group", "administrators_group = daemon", "nobody", 0},
      {"of a group that is none", "administrators_group = no such group", "nobody", 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Configure(row.conf);
    EXPECT_EQ(row.result, QLIBGroupIsAdminGroupMem(row.user, 0));
  }
  EXPECT_LT(QLIBGroupIsAdminGroupMem(nullptr, 0), 0);
}

TEST_F(PermissionPlatform, APrivilegeIsHeldByWhomItsFileNames) {
  Write("/etc/orbo/privileges/A.b",
        "# people\n"
        "user alice\n"
        "user  bob\t10.0.0.0/8, ::1\n"
        "user carol ,\n"
        "user dave bad\n"
        "group nogroup 192.0.2.1\n"
        "users eve\n"
        "everyone 127.0.0.1");
  Write("/etc/orbo/secret", "everyone\n");
  Write("/etc/orbo/privileges/.hidden", "everyone\n");
  const struct {
    const char* user;
    const char* privilege;
    const char* address;
    bool held;
  } rows[] = {
      {"alice", "A.b", "203.0.113.1", true},
      {"alice", "A.b", "", true},
      {"Alice", "A.b", "203.0.113.1", false},
      {"bob", "A.b", "10.9.9.9", true},
      {"bob", "A.b", "::1", true},
      {"bob", "A.b", "11.9.9.9", false},
      {"bob", "A.b", "", false},
      {"carol", "A.b", "10.9.9.9", false},
      {"dave", "A.b", "10.9.9.9", false},
      {"eve", "A.b", "10.9.9.9", false},
      {"nobody", "A.b", "192.0.2.1", true},
      {"nobody", "A.b", "192.0.2.2", false},
      {"stranger", "A.b", "127.0.0.1", true},
      {"stranger", "A.b", "10.9.9.9", false},
      {"", "A.b", "127.0.0.1", false},
      {"alice", "A.c", "127.0.0.1", false},
      {"alice", "../secret", "127.0.0.1", false},
      {"alice", ".hidden", "127.0.0.1", false},
      {"alice", "..", "127.0.0.1", false},
      {"alice", "", "127.0.0.1", false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.user) + " " + row.privilege + " " + row.address);
    EXPECT_EQ(row.held, QLIBAppPrivUserHas(row.user, row.privilege, row.address) != 0);
  }
  EXPECT_EQ(0, QLIBAppPrivUserHas(nullptr, "A.b", "127.0.0.1"));
  EXPECT_EQ(0, QLIBAppPrivUserHas("bob", "A.b", nullptr));
}

TEST_F(PermissionPlatform, AChangedConfigurationHoldsAtOnce) {
  // Many within one tick of the clock that files get their times from.
  for (int minutes = 10; minutes < 100; ++minutes) {
    Configure("session_timeout=" + std::to_string(minutes));
    ASSERT_EQ(minutes, QLIBCConfGetKEPTimeout());
  }
  fs::remove(std::string(std::getenv("WEBAPI_ROOT")) + "/etc/orbo/platform.conf");
  EXPECT_EQ(15, QLIBCConfGetKEPTimeout());
}

}  // namespace
}  // namespace ORBO
