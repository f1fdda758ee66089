#include "platform/linux/session_store.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <fstream>

#include "platform/cgi.h"
#include "unit/LogCapture.h"
#include "unit/WebAPIDirectory.h"

namespace ORBO {
namespace {

namespace fs = std::filesystem;

const std::string kForeignId = "s" + std::string(43, 'A');

class SessionStore : public testing::Test {
 protected:
  static std::string Path(const std::string& name) {
    return OrboCgiSessionDirectory() + "/" + name;
  }

  static std::string Make(int timeout) {
    Session session;
    session.user = "alice";
    session.timeout = timeout;
    std::string id;
    EXPECT_TRUE(CreateSession(session, id));
    return id;
  }

  // Puts the file's last modification `seconds` into the past.
  static void Age(const std::string& name, std::int64_t seconds) {
    fs::last_write_time(Path(name),
                        fs::file_time_type::clock::now() - std::chrono::seconds(seconds));
  }

  static void Write(const std::string& name, const std::string& text) {
    std::ofstream(Path(name)) << text;
    fs::permissions(Path(name), fs::perms::owner_read | fs::perms::owner_write);
  }

  WebAPIDirectory root_;
  Session session_;
};

TEST_F(SessionStore, OnlyIdsOfOneFormBecomePaths) {
  const std::string good = "s" + std::string(41, 'x') + "-_";
  EXPECT_TRUE(IsSessionId(good));
  for (const std::string& id :
       {std::string(), std::string("."), std::string(".."), std::string("s"), good + "x",
        good.substr(1), "1" + good.substr(1), good.substr(0, 43) + "/", good.substr(0, 43) + "=",
        good.substr(0, 43) + '\0', good + '\0',
        std::string("s../../../../../../../../../../etc/passwd/.."), std::string(1 << 20, 's')}) {
    SCOPED_TRACE(id.substr(0, 80));
    EXPECT_FALSE(IsSessionId(id));
    EXPECT_EQ(SessionState::kUnknown, ReadSession(id, session_));
    EXPECT_FALSE(TouchSession(id));
    EXPECT_FALSE(RemoveSession(id));
  }
}

TEST_F(SessionStore, ASessionComesBackAsItWasStored) {
  Session session;
  session.user = "DOMAIN\\\xC3\xA9ve \"x\"";
  session.webapi = R"({"a":[1]})";
  std::string id;
  std::string other_id;
  ASSERT_TRUE(CreateSession(session, id));
  ASSERT_TRUE(CreateSession(session, other_id));
  EXPECT_NE(id, other_id);
  EXPECT_EQ(fs::perms(0600), fs::status(Path(id)).permissions());
  EXPECT_EQ(fs::perms(0700), fs::status(Path("")).permissions());
  ASSERT_EQ(SessionState::kValid, ReadSession(id, session_));
  EXPECT_EQ(session.user, session_.user);
  EXPECT_EQ(session.webapi, session_.webapi);
  EXPECT_NEAR(static_cast<double>(std::time(nullptr)), static_cast<double>(session_.created), 5);
  EXPECT_TRUE(RemoveSession(id));
  EXPECT_FALSE(RemoveSession(id));
  EXPECT_EQ(SessionState::kUnknown, ReadSession(id, session_));
}

TEST_F(SessionStore, WhatCannotBeReadBackIsNotStored) {
  for (const std::string& user :
       {std::string(), std::string("a\0b", 3), std::string("a\nb"), std::string(493, 'x')}) {
    Session session;
    session.user = user;
    std::string id = "unchanged";
    EXPECT_FALSE(CreateSession(session, id));
    EXPECT_EQ(EINVAL, errno);
    EXPECT_EQ("unchanged", id);
  }
  Session session;
  session.user = "alice";
  session.webapi.assign(20000, 'x');
  std::string id;
  EXPECT_FALSE(CreateSession(session, id));
}

TEST_F(SessionStore, TimesOutAfterMinutesWithoutActivity) {
  constexpr int kYear = 365 * 86400;
  const std::tuple<const char*, int, const char*, std::int64_t, SessionState, int> rows[] = {
      {"never", 0, "session_timeout=1", 10 * std::int64_t{kYear}, SessionState::kValid, 0},
      {"past the default", -1, "", 910, SessionState::kTimedOut, 15},
      {"no number", -1, "session_timeout=-1", 910, SessionState::kTimedOut, 15},
      {"the largest", 2147483647, "", kYear, SessionState::kValid, 2147483647},
      {"clock set back", 15, "", -kYear, SessionState::kValid, 15},
  };
  for (const auto& [name, timeout, conf, idle, state, holds] : rows) {
    SCOPED_TRACE(name);
    LogCapture log;
    root_.Configure(conf);
    const std::string id = Make(timeout);
    Age(id, idle);
    EXPECT_EQ(state, ReadSession(id, session_));
    EXPECT_EQ(holds, session_.timeout);
    EXPECT_LE(session_.last_active, std::time(nullptr));
    // A time in the future is set back, or the session would outlive the clock.
    struct stat status = {};
    ASSERT_EQ(0, stat(Path(id).c_str(), &status));
    EXPECT_LE(status.st_mtim.tv_sec, std::time(nullptr));
  }
}

TEST_F(SessionStore, AFileThatIsNoSessionIsUnusable) {
  const std::string id = Make(15);
  const std::string large = R"({"user":"alice"})" + std::string(20000, ' ');
  for (const std::string text :
       {R"(["alice"])", R"({"user":"alice"} x)", R"({"timeout":15})", R"({"user":""})",
        R"({"user":"a\u0000b"})", R"({"user":7})", R"({"user":"alice","skipAddressCheck":"no"})",
        R"({"user":"alice","timeout":"0"})", R"({"user":"alice","timeout":4294967296})",
        large.c_str()}) {
    SCOPED_TRACE(text.substr(0, 80));
    Write(kForeignId, text);
    EXPECT_EQ(SessionState::kUnusable, ReadSession(kForeignId, session_));
    EXPECT_TRUE(session_.user.empty());
  }
  if (geteuid() == 0) {
    ASSERT_EQ(0, chown(Path(id).c_str(), 65534, 65534));
    EXPECT_EQ(SessionState::kUnusable, ReadSession(id, session_)) << "another user's";
  }
}

TEST_F(SessionStore, ADirectoryOpenToOthersTakesNoSession) {
  Make(15);
  fs::permissions(OrboCgiSessionDirectory(), fs::perms::others_read, fs::perm_options::add);
  LogCapture log;
  Session session;
  session.user = "alice";
  std::string id;
  EXPECT_FALSE(CreateSession(session, id));
  EXPECT_EQ(EPERM, errno);
}

TEST_F(SessionStore, ANewSessionSweepsWhatIsLongGone) {
  const std::string valid = Make(15);
  const std::string timed_out = Make(60);
  const std::string forgotten = Make(15);
  const std::string endless = Make(0);
  Write(".new-old", "");
  Write(".new-now", "");
  Age(timed_out, 86400 + 1000);
  Age(forgotten, 86400 + 1000);
  Age(endless, 40 * 86400);
  Age(".new-old", 4000);
  Make(15);
  const std::pair<std::string, bool> rows[] = {{valid, true},       {timed_out, true},
                                               {forgotten, false},  {endless, true},
                                               {".new-old", false}, {".new-now", true}};
  for (const auto& [name, stays] : rows) {
    EXPECT_EQ(stays, fs::exists(Path(name))) << name;
  }
}

}  // namespace
}  // namespace ORBO
