#include "platform/linux/login_throttle.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "unit/LogCapture.h"
#include "unit/WebAPIDirectory.h"
#include "unit/processes.h"
#include "util/paths.h"

namespace ORBO {
namespace {

constexpr char kAddress[] = "192.0.2.1";
constexpr int kLock = 300;  // seconds, by default

std::string CounterFile() { return RootedPath("/run/orbo/logins/counters"); }

// As if the last calls had been made so many seconds earlier.
void LetPass(std::int64_t seconds) {
  struct Counter {
    std::int64_t failures;
    std::int64_t last;
    std::int64_t next;
  };
  std::fstream file(CounterFile(), std::ios::in | std::ios::out | std::ios::binary);
  Counter counter{};
  for (std::streamoff place = 0;
       file.seekg(place) && file.read(reinterpret_cast<char*>(&counter), sizeof counter);
       place += sizeof counter) {
    counter.last -= seconds * 1000;
    counter.next -= seconds * 1000;
    if (counter.failures != 0) {
      file.seekp(place);
      file.write(reinterpret_cast<const char*>(&counter), sizeof counter);
    }
  }
}

int Wait(const std::string& user, const std::string& address = kAddress) {
  return SecondsUntilLogin(user, address);
}

void Fail(const std::string& user, const std::string& address = kAddress) {
  EXPECT_EQ(0, Wait(user, address)) << user << " from " << address;
  NoteLoginFailure(user, address);
}

class LoginThrottle : public ::testing::Test {
 protected:
  WebAPIDirectory root_;
};

TEST_F(LoginThrottle, WaitsGrowUntilTheLockAndFailuresAreForgotten) {
  Fail("ann");
  Fail("ann");
  Fail("ann");
  EXPECT_EQ(1, Wait("ann"));
  Fail("bob");
  LetPass(1);
  Fail("ann");
  EXPECT_EQ(2, Wait("ann"));
  LetPass(2);
  Fail("ann");
  EXPECT_EQ(kLock, Wait("ann"));
  EXPECT_EQ(kLock, Wait("ANN", "198.51.100.7")) << "from anywhere, in any case";
  LetPass(kLock - 1);
  EXPECT_EQ(1, Wait("ann")) << "asking does not extend the lock";
  LetPass(1);
  Fail("ann");
  EXPECT_EQ(kLock, Wait("ann")) << "one attempt after the lock";
  LetPass(2 * kLock);
  Fail("ann");
  Fail("ann");
}

TEST_F(LoginThrottle, LimitsAreConfigured) {
  root_.Configure("login_attempts = 1\nlogin_lock_minutes = 2\n");
  Fail("ann");
  EXPECT_EQ(120, Wait("ann"));
  const LogCapture log;
  root_.Configure("login_attempts = 0\nlogin_lock_minutes = x\n");
  Fail("bob");
  EXPECT_EQ(0, Wait("bob")) << "what is out of range counts as not set";
  EXPECT_TRUE(log.Has("login_attempts is no number from 1 to 1000") &&
              log.Has("login_lock_minutes is no number from 1 to 1440"));
}

TEST_F(LoginThrottle, SuccessClearsTheUserAndNotTheAddress) {
  root_.Configure("login_attempts = 2\nlogin_address_attempts = 4\n");
  Fail("own");
  for (const char* user : {"u1", "u2", "u3"}) {
    LetPass(30);
    EXPECT_EQ(0, Wait("own"));
    NoteLoginSuccess("own", kAddress);
    LetPass(30);
    Fail(user);
  }
  EXPECT_EQ(kLock, Wait("u4")) << "an attacker's own account gives no attempts";
  EXPECT_EQ(0, Wait("u4", "192.0.2.2"));
}

TEST_F(LoginThrottle, OneNetworkIsOneAddress) {
  root_.Configure("login_address_attempts = 1\n");
  Fail("ann", "2001:db8::1");
  EXPECT_EQ(kLock, Wait("bob", "2001:db8::ffff:2"));
  EXPECT_EQ(0, Wait("bob", "2001:db8:0:1::1"));
}

TEST_F(LoginThrottle, AnAttemptThatIsNeverReportedFailed) {
  root_.Configure("login_attempts = 1\nlogin_address_attempts = 1\n");
  EXPECT_EQ(0, Wait("ann"));
  EXPECT_EQ(kLock, Wait("ann"));
  NoteLoginAbandoned("ann", kAddress);
  EXPECT_EQ(0, Wait("ann"));
}

TEST_F(LoginThrottle, ProcessesThatAskAtOnceShareTheAttempts) {
  root_.Configure("login_attempts = 1000\nlogin_address_attempts = 100000\n");
  const int admitted = SumOfProcesses(8, [](int /*number*/) {
    int count = 0;
    for (int asked = 0; asked < 100; ++asked) {
      count += Wait("ann") == 0 ? 1 : 0;
    }
    return count;
  });
  EXPECT_EQ(501, admitted) << "the free half and the one that is followed by a wait";
}

TEST_F(LoginThrottle, ARestartDoesNotLockForLonger) {
  root_.Configure("login_attempts = 1\n");
  Fail("ann");
  LetPass(-1000000);
  EXPECT_EQ(kLock, Wait("ann"));
  LetPass(kLock);
  EXPECT_EQ(0, Wait("ann"));
}

TEST_F(LoginThrottle, NobodyMayTryWithoutCounters) {
  const LogCapture log;
  std::filesystem::create_directories(RootedPath("/run/orbo"));
  std::ofstream(RootedPath("/run/orbo/logins")) << "no directory";
  EXPECT_GT(SecondsUntilLogin("ann", kAddress), 0);
  EXPECT_TRUE(log.Has("cannot use the login counters"));
}

TEST_F(LoginThrottle, ManyNamesDoNotFillTheDisk) {
  root_.Configure("login_address_attempts = 100000\n");
  for (int i = 0; i < 3000; ++i) {
    SecondsUntilLogin("name" + std::to_string(i), "198.51.100." + std::to_string(i % 250));
  }
  EXPECT_LE(std::filesystem::file_size(CounterFile()), 400000U);
  struct stat status {};
  ASSERT_EQ(0, stat(CounterFile().c_str(), &status));
  EXPECT_EQ(0600U, status.st_mode & 07777U);
}

}  // namespace
}  // namespace ORBO
