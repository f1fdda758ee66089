#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>

#include "platform/cgi.h"
#include "platform/linux/address.h"
#include "platform/linux/base64url.h"
#include "platform/linux/cross_site.h"
#include "platform/linux/fact_cache.h"
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

  // Puts the file's last modification `seconds` into the past.
  static void SetAge(const std::string& path, std::int64_t seconds) {
    fs::last_write_time(path, fs::file_time_type::clock::now() - std::chrono::seconds(seconds));
  }

  static std::string RemoteIP() {
    char text[65] = {};
    return OrboCgiGetRemoteIP(text, sizeof text) != 0 ? text : "";
  }

  WebAPIDirectory root_;
  LogCapture log_;
};

TEST_F(PermissionPlatform, NoFactsOutliveAFailedCheck) {
  Session session;
  session.user = "alice";
  session.webapi = "{}";
  std::string id;
  ASSERT_TRUE(CreateSession(session, id));
  OrboCgi cgi;
  OrboCgiInitEx(&cgi, 15, true, "current.users", "");
  char user[493] = "unset";
  const auto check = [&](const char* name, std::size_t size) {
    const int result = OrboCgiIsAuthorizedEx(&cgi, name, user, size, nullptr, 0);
    EXPECT_STREQ(result == 1 ? "alice" : "", user);
    EXPECT_EQ(result == 1, !cgi.session_file.empty());
    EXPECT_EQ(result == 1, OrboCgiGetOption(&cgi, kCgiOptionWebAPI) != nullptr);
    return result;
  };
  EXPECT_EQ(1, check(id.c_str(), sizeof user));
  EXPECT_EQ(-2, check(nullptr, sizeof user));
  EXPECT_EQ(1, check(id.c_str(), 6));
  EXPECT_EQ(-4, check(id.c_str(), 5)) << "no room for the name";
  OrboCgiFree(&cgi);
}

TEST_F(PermissionPlatform, PagesOfOtherSitesAreTold) {
  const struct {
    const char* host;
    const char* origin;
    bool foreign;
    Variables more = {};
  } rows[] = {
      {"nas:5000", "http://nas:5000", false},
      {"NAS", "http://nas:80", false},
      {"[::1]:80", "http://[::1]", false},
      {"nas:443", "https://nas", false, {{"HTTPS", "on"}}},
      {"nas", "http://nas:8080", true},
      {"nas", "https://nas", true},
      {"nas:443", "http://nas", true},
      {"nas", "http://nas.evil", true},
      {"nas", "http://nas@evil", true},
      {"nas", "null", true},
      {"", "http://", true},
      {"", "http://nas", true},
      {"nas", "http://nas http://evil", true},
      {"", "", false, {{"HTTP_SEC_FETCH_SITE", "none"}}},
      {"", "", true, {{"HTTP_SEC_FETCH_SITE", "same-site"}}},
      {"", "", true, {{"HTTP_SEC_FETCH_SITE", "x"}}},
      {"nas", "http://nas", true, {{"HTTP_SEC_FETCH_SITE", "cross-site"}}},
      {"nas", "https://nas", true, {{"HTTP_X_FORWARDED_PROTO", "https"}}},
      {"nas",
       "https://nas",
       false,
       {{"HTTP_X_FORWARDED_PROTO", "https"}, {"REMOTE_ADDR", "192.0.2.9"}}},
  };
  root_.Configure("trusted_proxies=192.0.2.9");
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.origin) + " at " + row.host);
    const Environment request({{"HTTP_HOST", row.host}, {"HTTP_ORIGIN", row.origin}});
    const Environment more(row.more);
    EXPECT_EQ(row.foreign, IsCrossSiteRequest());
  }
}

TEST_F(PermissionPlatform, OnlyTrustedProxiesAreBelievedAboutTheClient) {
  const std::string list = "trusted_proxies = 10.0.0.1, 10.1.0.0/16 fd00::/8,bad/8,";
  const std::tuple<const char*, std::string, const char*, const char*, const char*> rows[] = {
      {"nobody is trusted", "", "10.0.0.1", "192.0.2.7", "10.0.0.1"},
      {"not this one", list, "10.0.0.2", "192.0.2.7", "10.0.0.2"},
      {"a proxy", list, "10.0.0.1", "192.0.2.7", "192.0.2.7"},
      {"a mapped proxy", list, "::ffff:10.0.0.1", "192.0.2.7", "192.0.2.7"},
      {"an IPv6 proxy", list, "fd12::1", "2001:db8::0:7", "2001:db8::7"},
      {"made up in front", list, "10.0.0.1", "127.0.0.1, 192.0.2.7", "192.0.2.7"},
      {"made up before two proxies", list, "10.0.0.1", "::1, 192.0.2.7, 10.1.2.3", "192.0.2.7"},
      {"a client that is a proxy", list, "10.0.0.1", "10.1.0.9, 10.1.2.3", "10.1.0.9"},
      {"rubbish at the end", list, "10.0.0.1", "192.0.2.7, x", "10.0.0.1"},
      {"rubbish behind a proxy", list, "10.0.0.1", "x, 10.1.2.3", "10.0.0.1"},
      {"with a port", list, "10.0.0.1", "192.0.2.7:80", "10.0.0.1"},
      {"empty", list, "10.0.0.1", "", "10.0.0.1"},
      {"no peer", list, "", "192.0.2.7", ""},
  };
  for (const auto& [name, conf, peer, header, client] : rows) {
    SCOPED_TRACE(name);
    root_.Configure(conf);
    const Environment request(Variables{{"REMOTE_ADDR", peer}, {"HTTP_X_FORWARDED_FOR", header}});
    EXPECT_EQ(client, RemoteIP());
  }
  EXPECT_TRUE(log_.Has("bad/8"));
}

TEST(Address, RangesHoldTheirAddresses) {
  const std::tuple<const char*, const char*, bool> rows[] = {
      {"10.0.0.0/8", "10.255.0.1", true},       {"10.0.0.0/8", "11.0.0.1", false},
      {"10.0.0.0/8", "::ffff:10.1.1.1", true},  {"192.0.2.128/25", "192.0.2.129", true},
      {"192.0.2.128/25", "192.0.2.127", false}, {"192.0.2.1", "192.0.2.1", true},
      {"0.0.0.0/0", "203.0.113.9", true},       {"::/0", "203.0.113.9", true},
      {"fe80::/10", "febf::1%eth0", true},      {"::1/128", "::1", true},
      {"10.0.0.0/33", "10.0.0.0", false},       {"10.0.0.0/-1", "10.0.0.0", false},
      {"10.0.0.0/8x", "10.0.0.0", false},       {"10/8", "10.0.0.0", false},
  };
  AddressRange range;
  Address address;
  for (const auto& [range_text, address_text, holds] : rows) {
    SCOPED_TRACE(std::string(range_text) + " " + address_text);
    ASSERT_TRUE(ParseAddress(address_text, address));
    EXPECT_EQ(holds, ParseAddressRange(range_text, range) && Contains(range, address));
  }
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
  const std::tuple<const char*, std::string, const char*, int> rows[] = {
      {"user 0", "", "root", 1},
      {"an account", "", "nobody", 0},
      {"no account", "", "no such user", 0},
      {"named", "administrators = alice, DOM\\bob carol", "alice", 1},
      {"named among others", "administrators = alice, DOM\\bob carol", "DOM\\bob", 1},
      {"part of a name", "administrators = alice", "ali", 0},
      {"of the group", "administrators_group = nogroup", "nobody", 1},
      {"of another group", "administrators_group = daemon", "nobody", 0},
  };
  for (const auto& [name, conf, user, result] : rows) {
    SCOPED_TRACE(name);
    root_.Configure(conf);
    EXPECT_EQ(result, QLIBGroupIsAdminGroupMem(user, 0));
  }
  EXPECT_LT(QLIBGroupIsAdminGroupMem(nullptr, 0), 0);
}

TEST_F(PermissionPlatform, APrivilegeIsHeldByWhomItsFileNames) {
  Write("/etc/orbo/privileges/A.b",
        "# people\n"
        "user alice\n"
        "user  bob\t10.0.0.0/8, ::1\n"
        "user dave bad\n"
        "group nogroup 192.0.2.1\n"
        "users eve\n"
        "everyone 127.0.0.1");
  Write("/etc/orbo/secret", "everyone\n");
  Write("/etc/orbo/privileges/.hidden", "everyone\n");
  const std::tuple<const char*, const char*, bool> rows[] = {
      {"alice", "203.0.113.1", true}, {"alice", "", true},
      {"bob", "10.9.9.9", true},      {"bob", "::1", true},
      {"bob", "11.9.9.9", false},     {"bob", "", false},
      {"bob", nullptr, false},        {"dave", "10.9.9.9", false},
      {"eve", "10.9.9.9", false},     {"nobody", "192.0.2.1", true},
      {"nobody", "192.0.2.2", false}, {"stranger", "127.0.0.1", true},
      {"", "127.0.0.1", false},       {nullptr, "127.0.0.1", false},
  };
  for (const auto& [user, address, held] : rows) {
    EXPECT_EQ(held, QLIBAppPrivUserHas(user, "A.b", address) != 0)
        << testing::PrintToString(user) << testing::PrintToString(address);
  }
  for (const char* privilege : {"A.c", "../secret", ".hidden", "..", ""}) {
    EXPECT_EQ(0, QLIBAppPrivUserHas("alice", privilege, "127.0.0.1")) << privilege;
  }
}

TEST_F(PermissionPlatform, AChangedConfigurationHoldsAtOnce) {
  // Many within one tick of the clock that files get their times from.
  for (int minutes = 10; minutes < 100; ++minutes) {
    root_.Configure("session_timeout=" + std::to_string(minutes));
    ASSERT_EQ(minutes, QLIBCConfGetKEPTimeout());
  }
  fs::remove(std::string(std::getenv("WEBAPI_ROOT")) + "/etc/orbo/platform.conf");
  EXPECT_EQ(15, QLIBCConfGetKEPTimeout());
}

}  // namespace
}  // namespace ORBO
