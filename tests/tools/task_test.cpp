#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <future>

#include "CommandRun.h"
#include "platform/task.h"
#include "util/json_text.h"

namespace tools {
namespace {

using ::testing::AllOf;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;

class Tasks : public CommandTest {
 protected:
  static Json::Value Parse(const std::string& body) {
    Json::Value value;
    EXPECT_TRUE(ORBO::JSON::Parse(body, value));
    return value;
  }
  static bool Put(KEP::Task& task, const std::string& body) {
    return task.beginUpdate() && task.setProperty("body", Parse(body)) && task.endUpdate();
  }
  // Makes a record of ben's, with the work of a process that waits; its id.
  static pid_t PutRunning(KEP::Task& task, const std::string& body) {
    const pid_t worker = fork();
    if (worker == 0) {
      pause();
      _exit(0);
    }
    EXPECT_TRUE(Put(task, body) && task.setCreatePid(worker));
    return worker;
  }
  static std::string Progress(const std::string& percent) {
    return R"({"success":true,"data":{"progress":{"message":")" + std::string(50, 'x') +
           R"(\u001b[5m","percent":)" + percent + "}}}";
  }
};

TEST_F(Tasks, ThatAreOverHaveAState) {
  const struct {
    const char* id;
    std::string body;
    const char* shown;
    int exit_code;
  } rows[] = {
      {"done", R"({"success":true,"data":{"sum":1}})", "done  ", 0},
      {"complete", Progress("100"), "done +100 %", 0},
      {"failed", R"({"success":false,"error":{"code":9}})", "failed", 1},
      {"partly", Progress("40.9"), "stopped +40 %", 1},
      {"silent", "{}", "failed", 1},
  };
  for (const auto& row : rows) {
    KEP::Task task("ben", row.id);
    ASSERT_TRUE(Put(task, row.body) && task.finish(false));
  }
  const std::string table = Output("task list");
  for (const auto& row : rows) {
    EXPECT_THAT(table, ContainsRegex("ben/" + std::string(row.id) + " +" + row.shown));
    EXPECT_EQ(row.exit_code, Run("task watch ben/" + std::string(row.id)).exit_code) << row.id;
  }
  EXPECT_EQ(1, Document("task status ben/done")["data"]["sum"].asInt());
  EXPECT_EQ("ben/done", Document("task list --user ben --json")[0]["id"].asString());
  EXPECT_EQ(Json::Value(Json::arrayValue), Document("task list --user cleo --json"));
  for (const char* none : {"status ben/none", "watch ben/none", "stop done", "stop ../run/x"}) {
    const Result result = Run("task " + std::string(none));
    EXPECT_EQ(1, result.exit_code);
    EXPECT_THAT(result.errors, HasSubstr("no such task"));
  }
  EXPECT_EQ(2, Run("task watch").exit_code);
}

TEST_F(Tasks, AreWatchedToTheirEnd) {
  const std::pair<std::string, std::string> rows[] = {
      {TOOLS_COMMAND " task watch ben/1", "^25 %  \\.\\.\\.x+.*\n50 %  \\.\\.\\.x+.*\n\\{"},
      {"script -qefc '" TOOLS_COMMAND " task watch ben/1' /dev/null",
       "\\[#######-+\\] 25 %.*\r.*\\[###############-+\\] 50 %"},
  };
  for (const auto& [program, shown] : rows) {
    std::remove((root() + "/output").c_str());
    KEP::Task task("ben", "1");
    const pid_t worker = PutRunning(task, Progress("25"));
    std::future<Result> watching = std::async([this, line = program] { return Run("", "", line); });
    const auto wait_for = [&](const char* text) {
      while (ReadFile("/output").find(text) == std::string::npos &&
             watching.wait_for(std::chrono::milliseconds(5)) != std::future_status::ready) {
      }
    };
    wait_for("25 %");
    EXPECT_TRUE(Put(task, Progress("50")));
    wait_for("50 %");
    EXPECT_TRUE(task.beginUpdate() && task.setProperty("body", Parse(R"({"success":true})")) &&
                task.finish(true) && task.endUpdate());
    const Result result = watching.get();
    EXPECT_EQ(0, result.exit_code);
    EXPECT_THAT(result.output, AllOf(ContainsRegex(shown), Not(HasSubstr("\x1b[5m"))));
    EXPECT_TRUE(kill(worker, SIGKILL) == 0 && wait(nullptr) == worker && task.remove());
  }
}

TEST_F(Tasks, AreStopped) {
  KEP::Task task("@users", "a/b");
  PutRunning(task, Progress("7"));
  EXPECT_THAT(Output("task list"), ContainsRegex("@users/a/b +running +7 %"));
  EXPECT_EQ(1, Run("task stop ben/none @users/a/b --keep").exit_code) << "and yet the second";
  int status = 0;
  EXPECT_TRUE(wait(&status) > 0 && WTERMSIG(status) == SIGTERM);
  EXPECT_THAT(Output("task list"), ContainsRegex("@users/a/b +stopped"));
  EXPECT_THAT(ReadFile("/run/orbo/tasks/%40users/a%2Fb.json"), HasSubstr("\"autoRemove\":false"));
}

}  // namespace
}  // namespace tools
