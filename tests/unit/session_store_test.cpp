#include "platform/linux/session_store.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>

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
    timespec times[2] = {};
    times[0].tv_sec = times[1].tv_sec = static_cast<time_t>(std::time(nullptr) - seconds);
    ASSERT_EQ(0, utimensat(AT_FDCWD, Path(name).c_str(), times, 0));
  }

  static void Write(const std::string& name, const std::string& text) {
    std::ofstream(Path(name)) << text;
    fs::permissions(Path(name), fs::perms::owner_read | fs::perms::owner_write);
  }

  static mode_t Mode(const std::string& path) {
    struct stat status = {};
    EXPECT_EQ(0, stat(path.c_str(), &status));
    return status.st_mode & 07777;
  }

  static void Configure(const std::string& text) {
    const std::string directory = std::string(std::getenv("WEBAPI_ROOT")) + "/etc/orbo";
    fs::create_directories(directory);
    std::ofstream(directory + "/platform.conf") << text;
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
  session.address = "fe80::1";
  session.application = "Files";
  session.webapi = R"({"a":[1]})";
  session.language = "fra";
  session.skip_address_check = true;
  session.timeout = 7;
  std::string id;
  std::string other_id;
  ASSERT_TRUE(CreateSession(session, id));
  ASSERT_TRUE(CreateSession(session, other_id));
  EXPECT_NE(id, other_id);
  EXPECT_EQ(0600U, Mode(Path(id)));
  EXPECT_EQ(0700U, Mode(OrboCgiSessionDirectory()));
  Session read;
  ASSERT_EQ(SessionState::kValid, ReadSession(id, read));
  EXPECT_EQ(session.user, read.user);
  EXPECT_EQ(session.address, read.address);
  EXPECT_EQ(session.application, read.application);
  EXPECT_EQ(session.webapi, read.webapi);
  EXPECT_EQ(session.language, read.language);
  EXPECT_TRUE(read.skip_address_check);
  EXPECT_EQ(7, read.timeout);
  EXPECT_NEAR(static_cast<double>(std::time(nullptr)), static_cast<double>(read.created), 5);
  EXPECT_TRUE(RemoveSession(id));
  EXPECT_FALSE(RemoveSession(id));
  EXPECT_EQ(SessionState::kUnknown, ReadSession(id, read));
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
  const struct {
    const char* name;
    int timeout;
    const char* conf;
    std::int64_t idle;
    SessionState state;
    int holds;
  } rows[] = {
      {"just used", 15, "", 0, SessionState::kValid, 15},
      {"nearly", 15, "", 890, SessionState::kValid, 15},
      {"timed out", 15, "", 910, SessionState::kTimedOut, 15},
      {"never", 0, "session_timeout=1", 10 * std::int64_t{kYear}, SessionState::kValid, 0},
      {"the default", -1, "", 890, SessionState::kValid, 15},
      {"past the default", -1, "", 910, SessionState::kTimedOut, 15},
      {"the system's", -1, "session_timeout = 1", 70, SessionState::kTimedOut, 1},
      {"the system's, never", -1, "session_timeout=0", kYear, SessionState::kValid, 0},
      {"no number", -1, "session_timeout=-1", 910, SessionState::kTimedOut, 15},
      {"the largest", 2147483647, "", kYear, SessionState::kValid, 2147483647},
      {"clock set back", 15, "", -kYear, SessionState::kValid, 15},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    LogCapture log;
    Configure(row.conf);
    const std::string id = Make(row.timeout);
    Age(id, row.idle);
    EXPECT_EQ(row.state, ReadSession(id, session_));
    EXPECT_EQ(row.holds, session_.timeout);
    EXPECT_LE(session_.last_active, std::time(nullptr));
    EXPECT_TRUE(TouchSession(id));
    EXPECT_EQ(SessionState::kValid, ReadSession(id, session_));
  }
}

TEST_F(SessionStore, ASessionFromTheFutureDoesNotOutliveTheClock) {
  const std::string id = Make(15);
  Age(id, -86400);
  EXPECT_EQ(SessionState::kValid, ReadSession(id, session_));
  struct stat status = {};
  ASSERT_EQ(0, stat(Path(id).c_str(), &status));
  EXPECT_LE(status.st_mtim.tv_sec, std::time(nullptr));
}

TEST_F(SessionStore, AFileThatIsNoSessionIsUnusable) {
  const std::string good = Make(15);
  const auto link = [&](const std::string& path) { fs::create_symlink(Path(good), path); };
  const auto text = [](const std::string& content) {
    return [content](const std::string& path) { Write(fs::path(path).filename(), content); };
  };
  const auto with_mode = [&](mode_t mode) {
    return [&good, mode](const std::string& path) {
      fs::copy_file(Path(good), path);
      ASSERT_EQ(0, chmod(path.c_str(), mode));
    };
  };
  struct {
    const char* name;
    std::function<void(const std::string&)> make;
    bool only_root = false;
    bool never_root = false;
  } rows[] = {
      {"link to a session", link},
      {"directory", [](const std::string& path) { fs::create_directory(path); }},
      {"pipe", [](const std::string& path) { ASSERT_EQ(0, mkfifo(path.c_str(), 0600)); }},
      {"empty", text("")},
      {"truncated", text(R"({"user":"alice","time)")},
      {"null", text("null")},
      {"list", text(R"(["alice"])")},
      {"trailing text", text(R"({"user":"alice"} x)")},
      {"no user", text(R"({"timeout":15})")},
      {"empty user", text(R"({"user":""})")},
      {"NUL in the user", text(R"({"user":"a\u0000b"})")},
      {"user of the wrong type", text(R"({"user":7})")},
      {"flag of the wrong type", text(R"({"user":"alice","skipAddressCheck":"no"})")},
      {"time-out of the wrong type", text(R"({"user":"alice","timeout":"0"})")},
      {"time-out beyond its range", text(R"({"user":"alice","timeout":4294967296})")},
      {"too large", text(R"({"user":"alice"})" + std::string(20000, ' '))},
      {"writable for others", with_mode(0622)},
      {"unreadable", with_mode(0), false, true},
      {"another user's",
       [&](const std::string& path) {
         fs::copy_file(Path(good), path);
         ASSERT_EQ(0, chown(path.c_str(), 65534, 65534));
       },
       true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    if (geteuid() == 0 ? row.never_root : row.only_root) {
      continue;
    }
    row.make(Path(kForeignId));
    EXPECT_EQ(SessionState::kUnusable, ReadSession(kForeignId, session_));
    EXPECT_TRUE(session_.user.empty());
    fs::remove_all(Path(kForeignId));
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

TEST_F(SessionStore, WhatRootMakesIsTheServiceUsers) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "not root";
  }
  Configure("service_user=nobody");
  const std::string id = Make(15);
  struct stat directory = {};
  struct stat file = {};
  ASSERT_EQ(0, stat(OrboCgiSessionDirectory().c_str(), &directory));
  ASSERT_EQ(0, stat(Path(id).c_str(), &file));
  EXPECT_EQ(65534U, directory.st_uid);
  EXPECT_EQ(65534U, file.st_uid);
  EXPECT_EQ(SessionState::kValid, ReadSession(id, session_));
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
  const struct {
    std::string name;
    bool stays;
  } rows[] = {{valid, true},   {timed_out, true},   {forgotten, false},
              {endless, true}, {".new-old", false}, {".new-now", true}};
  for (const auto& row : rows) {
    EXPECT_EQ(row.stays, fs::exists(Path(row.name))) << row.name;
  }
}

TEST_F(SessionStore, TheListNamesSessionsWithoutOpeningThem) {
  const std::string valid = Make(15);
  const std::string timed_out = Make(15);
  Age(timed_out, 1000);
  Write(kForeignId, "{");
  Write("notes", R"({"user":"alice"})");
  const std::vector<ListedSession> sessions = ListSessions();
  ASSERT_EQ(2U, sessions.size());
  for (const ListedSession& listed : sessions) {
    EXPECT_EQ(listed.id == timed_out, listed.timed_out);
    EXPECT_EQ("alice", listed.session.user);
  }
  const std::string handle = SessionHandle(valid);
  EXPECT_EQ(13U, handle.size());
  EXPECT_EQ(handle, SessionHandle(valid));
  EXPECT_NE(handle, SessionHandle(timed_out));
}

// One of several processes that work on the sessions at the same time.
int WorkOnSessions(const std::string& shared) {
  for (int i = 0; i < 150; ++i) {
    Session session;
    session.user = "user" + std::to_string(getpid());
    std::string id;
    Session read;
    if (!CreateSession(session, id) || ReadSession(id, read) != SessionState::kValid ||
        read.user != session.user || !TouchSession(id) || !TouchSession(shared) ||
        ReadSession(shared, read) != SessionState::kValid || read.user != "alice") {
      return 1;
    }
    for (const ListedSession& listed : ListSessions()) {
      if (listed.session.user.empty()) {
        return 2;
      }
    }
    if (!RemoveSession(id) || ReadSession(id, read) != SessionState::kUnknown) {
      return 3;
    }
  }
  return 0;
}

TEST_F(SessionStore, ProcessesDoNotDisturbEachOther) {
  const std::string shared = Make(15);
  std::vector<pid_t> children;
  for (int i = 0; i < 4; ++i) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      _exit(WorkOnSessions(shared));
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = -1;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
  }
  EXPECT_EQ(1, std::distance(fs::directory_iterator(OrboCgiSessionDirectory()),
                             fs::directory_iterator()));
}

}  // namespace
}  // namespace ORBO
