#include "runner/usage_counter.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "platform/files.h"
#include "unit/WebAPIDirectory.h"
#include "unit/json.h"
#include "util/read_file.h"

namespace ORBO {
namespace {

namespace fs = std::filesystem;

struct UsageCounter : testing::Test {
  bool Count(const std::string& api = "A.B.C") { return CountCall(spool, api, "list", 1); }
  Json::Value Counter(const std::string& api = "A.B.C", const std::string& group = "A.B.C") {
    std::string text;
    ReadWholeFile(spool + "/" + group + ".json", text);
    return FromText(text)[api + "_1_list"];
  }

  const WebAPIDirectory directory;
  const std::string spool = std::string(std::getenv("WEBAPI_ROOT")) + "/var/spool/webapi";
  const std::string file = spool + "/A.B.C.json";
};

TEST_F(UsageCounter, TheAPINamesTheFile) {
  for (const std::string rest : {"", ".D", ".D.E", ".D.E.F"}) {
    EXPECT_TRUE(Count("A.B.C" + rest));
    EXPECT_EQ(1, Counter("A.B.C" + rest, "A.B.C" + rest.substr(0, 2))["count"].asInt()) << rest;
  }
  EXPECT_FALSE(Count("../A"));
  EXPECT_EQ(fs::perms::owner_all, fs::status(spool).permissions());
}

TEST_F(UsageCounter, AddsToACounterAndReplacesWhatIsNone) {
  ASSERT_TRUE(Count());
  const std::string big = R"({"A.B.C_1_list":{"ctime":5,"count":1}})" + std::string(1U << 20, ' ');
  const std::tuple<std::string, Json::Int64, bool> rows[] = {
      {R"({"A.B.C_1_list":{"ctime":5,"count":41}})", 42, true},
      {R"({"A.B.C_1_list":{"ctime":5,"count":9223372036854775807}})", INT64_MAX, true},
      {R"({"A.B.C_1_list":{"ctime":5,"count":18446744073709551615}})", 1, true},
      {R"({"A.B.C_1_list":{"ctime":5,"count":-7}})", -6, true},
      {R"({"A.B.C_1_list":{"ctime":5,"count":[-7]}})", 1, true},
      {R"({"A.B.C_1_list":7})", 1, false},
      {"{", 1, false},
      {"[1]", 1, false},
      {big, 1, false}};
  for (const auto& [before, count, is_old] : rows) {
    std::ofstream(file) << before;
    EXPECT_TRUE(Count());
    EXPECT_EQ(count, Counter()["count"].asInt64()) << before.substr(0, 60);
    EXPECT_EQ(is_old, Counter()["ctime"].asInt64() == 5) << before.substr(0, 60);
  }
}

TEST_F(UsageCounter, LinksDraftsAndFailuresCostNoMoreThanTheCount) {
  directory.Write("victim", R"({"A.B.C_1_list":{"count":5,"ctime":5}})");
  ASSERT_TRUE(Count());
  fs::remove(file);
  fs::create_symlink(fs::absolute("victim"), file);
  fs::create_symlink(fs::absolute("victim"), file + ".new");  // as left by a killed process
  EXPECT_TRUE(Count() && Count() && Count());
  EXPECT_EQ(3, Counter()["count"].asInt());
  EXPECT_EQ(38U, fs::file_size("victim"));
  const auto count_on_a_full_disk = [this] {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit none{0, 0};
    setrlimit(RLIMIT_FSIZE, &none);
    _exit(Count() ? 1 : 0);
  };
  EXPECT_EXIT(count_on_a_full_disk(), testing::ExitedWithCode(0), "");
  int lock = -1;
  ASSERT_EQ(0, QLIBCFileLockTimeByFile((file + ".lock").c_str(), 1, 0, &lock));
  EXPECT_FALSE(Count());
  QLIBCFileUnlockByFile(lock);
  EXPECT_EQ(3, Counter()["count"].asInt());
  fs::remove(file + ".lock");
  fs::create_symlink(fs::absolute("elsewhere"), file + ".lock");
  EXPECT_FALSE(Count() || fs::exists("elsewhere"));
}

TEST_F(UsageCounter, ProcessesAtOnceLoseNoCount) {
  ASSERT_TRUE(Count());
  pid_t children[64];
  for (pid_t& child : children) {
    child = fork();
    if (child == 0) {
      int counted = 0;
      for (int i = 0; i < 200; ++i) {
        counted += Count() ? 1 : 0;
      }
      _exit(counted);
    }
  }
  Json::Int64 sum = 1;
  for (const pid_t child : children) {
    int status = 0;
    waitpid(child, &status, 0);
    sum += WIFEXITED(status) ? WEXITSTATUS(status) : 0;
  }
  EXPECT_EQ(sum, Counter()["count"].asInt64());
  EXPECT_LT(64 * 100, sum);
}

TEST_F(UsageCounter, AKilledProcessLeavesAWholeFile) {
  ASSERT_TRUE(Count());
  for (int round = 0; round < 100; ++round) {
    const pid_t child = fork();
    if (child == 0) {
      for (;;) {
        Count();
      }
    }
    usleep(static_cast<useconds_t>(round * 20));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    ASSERT_FALSE(Counter().empty());
  }
}

}  // namespace
}  // namespace ORBO
