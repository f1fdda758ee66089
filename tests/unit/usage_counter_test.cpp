#include "runner/usage_counter.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "platform/files.h"
#include "unit/WebAPIDirectory.h"
#include "unit/json.h"
#include "unit/processes.h"
#include "util/read_file.h"

namespace ORBO {
namespace {

namespace fs = std::filesystem;

struct UsageCounter : testing::Test {
  bool Count() { return CountCall(spool, "A.B.C", "list", 1); }
  Json::Value Counter() {
    std::string text;
    ReadWholeFile(file, text);
    return FromText(text)["A.B.C_1_list"];
  }

  const WebAPIDirectory directory;
  const std::string spool = std::string(std::getenv("WEBAPI_ROOT")) + "/var/spool/webapi";
  const std::string file = spool + "/A.B.C.json";
};

TEST_F(UsageCounter, TheAPINamesTheFile) {
  for (const std::string rest : {"", ".D", ".D.E", ".D.E.F"}) {
    EXPECT_TRUE(CountCall(spool, "A.B.C" + rest, "list", 1));
    const std::string counter = "\"A.B.C" + rest + "_1_list\"";
    std::string text;
    ReadWholeFile(spool + "/A.B.C" + rest.substr(0, 2) + ".json", text);
    EXPECT_NE(text.find(counter), std::string::npos) << text;
  }
  EXPECT_FALSE(CountCall(spool, "../A", "list", 1));
}

TEST_F(UsageCounter, LinksDraftsAndFailuresCostNoMoreThanTheCount) {
  directory.Write("victim", R"({"A.B.C_1_list":{"count":5,"ctime":5}})");
  ASSERT_TRUE(Count());
  EXPECT_EQ(fs::perms::owner_all, fs::status(spool).permissions());
  std::ofstream(file) << R"({"A.B.C_1_list":{"ctime":5,"count":41}})";
  EXPECT_TRUE(Count() && Counter()["count"] == 42 && Counter()["ctime"] == 5);
  std::ofstream(file) << R"({"A.B.C_1_list":{"ctime":5,"count":1}})" << std::string(1 << 20, ' ');
  EXPECT_TRUE(Count() && Counter()["count"] == 1) << "too large";
  fs::remove(file);
  fs::remove(file + ".new");
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
  const int sum = SumOfProcesses(64, [this](int /*number*/) {
    int counted = 0;
    for (int i = 0; i < 200; ++i) {
      counted += Count() ? 1 : 0;
    }
    return counted;
  });
  EXPECT_EQ(sum + 1, Counter()["count"].asInt());
  EXPECT_LT(64 * 100, sum);
}

}  // namespace
}  // namespace ORBO
