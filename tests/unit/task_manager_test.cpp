#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/linux/task_record.h"
#include "platform/task.h"
#include "unit/WebAPIDirectory.h"
#include "unit/json.h"

namespace KEP {
namespace {

namespace fs = std::filesystem;
using ORBO::JSON::ToText;

// A process that does the work and exits, with 0 if that gives true, or ends with the
// test.
template <typename Work>
pid_t Fork(Work work) {
  const pid_t child = fork();
  if (child == 0) {
    _exit(prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 && work() ? 0 : 1);
  }
  return child;
}

int StatusOf(pid_t child) {
  int status = -1;
  return waitpid(child, &status, 0) < 0 && errno == EINTR ? StatusOf(child) : status;
}

bool Write(Task& task, const char* name, const Json::Value& value) {
  return task.beginUpdate() && task.setProperty(name, value) && task.endUpdate();
}

struct TaskManager : testing::Test {
  std::string File(const std::string& id) const { return directory + "/" + id + ".json"; }
  void Put(const std::string& path, const std::string& text, std::int64_t age = 0) const {
    std::ofstream(path) << text;
    fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write);
    fs::last_write_time(path, fs::file_time_type::clock::now() - std::chrono::seconds(age));
  }

  const ORBO::WebAPIDirectory root;
  const std::string tasks = std::string(std::getenv("WEBAPI_ROOT")) + "/run/orbo/tasks";
  const std::string directory = tasks + "/alice";
  const std::string file = File("1");
  Task task{"alice", "1"};
};

TEST_F(TaskManager, NoNameLeavesTheDirectory) {
  std::istringstream names(
      ".. / @administrators DOM\\user %2F a/../../b a A \xff .new % -_ a% a.json");
  int owners = 0;
  EXPECT_TRUE(TaskMgr("alice").getAllTaskId("").empty() && !fs::exists(tasks)) << "only looked at";
  for (std::string name; names >> name;) {
    Task named(name.c_str(), name.c_str());
    ASSERT_TRUE(named.isOpen() && Write(named, "a", 1)) << name;
    EXPECT_EQ(name, TaskMgr(name.c_str()).getAllTaskId("")[0].asString());
    EXPECT_EQ(5U + 22U, TaskUtil::getUniqueID(name.c_str(), "12/45").size());
    EXPECT_EQ(++owners, std::distance(fs::directory_iterator(tasks), {})) << name;
  }
  for (const auto& entry : fs::recursive_directory_iterator(tasks)) {
    EXPECT_EQ(fs::perms::none, entry.status().permissions() & fs::perms(0077)) << entry.path();
  }
  EXPECT_NE(TaskUtil::getUniqueID("a", "p"), TaskUtil::getUniqueID("a", "p"));
  EXPECT_TRUE(TaskUtil::checkTaskExists("a\0b", "a\0b"));
  const std::string long_name(4096, 'x');
  for (const char* name : {static_cast<const char*>(nullptr), "", long_name.c_str()}) {
    EXPECT_FALSE(Task(name, "1").isOpen() || Task("a", name).beginUpdate());
    EXPECT_FALSE(TaskMgr(name).isOpen() || TaskUtil::checkTaskExists(name, "a"));
    EXPECT_EQ("", TaskUtil::getUniqueID(name, "") + TaskUtil::getUniqueID("a", long_name.c_str()));
  }
}

TEST_F(TaskManager, AnUpdateChangesWhatIsStoredAndBringsNothingBack) {
  EXPECT_FALSE(task.finish(true) || task.setCreatePid(getpid()) || task.remove() || task.reload());
  EXPECT_FALSE(task.setProperty("a", 1) || task.endUpdate() || fs::exists(file));
  ASSERT_TRUE(Write(task, "a", 1));
  Task other("alice", "1");
  ASSERT_TRUE(Write(task, "b", ORBO::FromText(R"({"x":[1.5,"y\n",null]})")));
  ASSERT_TRUE(other.beginUpdate() && !other.beginUpdate() && other.setCreatePid(getpid()));
  Json::Value deep;
  deep.append(ORBO::FromText(std::string(511, '[') + std::string(511, ']')));
  EXPECT_FALSE(other.setProperty("deep", deep) || other.setProperty(nullptr, 1));
  EXPECT_TRUE(other.setProperty("deepest", deep[0])) << "the record can be read then";
  EXPECT_TRUE(other.setProperty("a", "yes") && other.endUpdate() && task.reload());
  EXPECT_EQ(R"({"x":[1.5,"y\n",null]})", ToText(task.getProperty("b")));
  EXPECT_TRUE(task.getBoolProperty("a", false) && task.getCreatePid() == getpid());
  EXPECT_EQ(0, StatusOf(Fork([this] {
              std::signal(SIGXFSZ, SIG_IGN);
              const rlimit full_disk{100, 100};
              setrlimit(RLIMIT_FSIZE, &full_disk);
              return !Write(task, "a", "x");
            })));
  EXPECT_TRUE(task.reload() && task.getProperty("a") == "yes");
  { const TaskUpdate left(task); }
  EXPECT_TRUE(task.beginUpdate() && task.remove());
  EXPECT_FALSE(Write(other, "a", 2) || other.finish(true) || other.reload());
  EXPECT_TRUE(fs::is_empty(directory));
}

TEST_F(TaskManager, WhatIsNoRecordIsUnusable) {
  ASSERT_TRUE(Write(task, "a", 1));
  fs::rename(file, tasks + "/good");
  for (const std::string text :
       {"link", "pipe", "", "{", "[]", "{}", R"({"created":0})", R"({"created":"5"})",
        R"({"created":5} x)", R"({"created":5,"workerId":-1})", R"({"created":5,"properties":[]})",
        R"({"created":5,"autoRemove":1})", R"({"created":5,"properties":{"a":01}})"}) {
    text == "link" ? fs::create_symlink(tasks + "/good", file) : Put(file, text);
    EXPECT_TRUE(text != "pipe" || (fs::remove(file) && mkfifo(file.c_str(), 0600) == 0));
    EXPECT_FALSE(TaskUtil::checkTaskExists("alice", "1") || task.reload()) << text;
    EXPECT_FALSE(Task("alice", "1").isOpen() || Write(task, "b", 1)) << text;
    EXPECT_EQ("[]", ToText(TaskMgr("alice").getAllTaskId(nullptr))) << text;
    fs::remove(file);
  }
  fs::rename(tasks + "/good", file);
  EXPECT_TRUE(task.reload() && !task.hasProperty("b"));
  fs::permissions(directory, fs::perms::others_all, fs::perm_options::add);
  EXPECT_FALSE(TaskMgr("alice").isOpen() || Task("alice", "2").beginUpdate());
}

TEST_F(TaskManager, StoppingATaskThatFinishesLosesNothing) {
  for (int i = 0; i < 1000; ++i) {
    Task started("alice", std::to_string(i).c_str());
    ASSERT_TRUE(Write(started, "info", i));
    const pid_t child = Fork([&started] {
      return started.setCreatePid(getpid()) != started.isMarkedFinished() &&
             Write(started, "body", 1) && started.finish(false);
    });
    Task other("alice", std::to_string(i).c_str());
    while (i % 4 != 0 && !other.isFinished() && other.getCreatePid() == 0) {
      other.reload();
    }
    const int pid = i % 4 < 2 ? other.getCreatePid() : 0;
    ASSERT_TRUE(pid == 0 || (pid == child && kill(pid, SIGTERM) == 0));
    ASSERT_TRUE(other.finish(true));
    const bool was_killed = StatusOf(child) == SIGTERM;
    ASSERT_TRUE(started.reload() && started.isFinished() && started.getCreatePid() == 0);
    ASSERT_TRUE(started.getProperty("info") == i && (was_killed || started.hasProperty("body")));
  }
}

TEST_F(TaskManager, AnIdThatIsUsedAgainIsAnotherProcess) {
  const pid_t child = Fork([] { return prctl(PR_SET_NAME, "a) Z 1 (b") != 0 || pause() != 0; });
  const pid_t gone = Fork([] { return true; });
  StatusOf(gone);
  ORBO::ProcessIdentity self, worker;
  ASSERT_TRUE(ORBO::IdentifyProcess(getpid(), self) && ORBO::IdentifyProcess(child, worker));
  ASSERT_TRUE(Write(task, "info", 1));
  using Process = ORBO::ProcessIdentity;
  const Process unknown = {child, 0}, restarted = {child, worker.start, worker.boot + 1};
  const std::tuple<const char*, std::int64_t, Process, Process, bool, pid_t> rows[] = {
      {"works", 99, {gone, 1}, worker, false, child},
      {"not sure", 99, {gone, 1}, unknown, false, 0},
      {"of an earlier start of the system", 0, self, restarted, true, 0},
      {"used again", 0, self, {child, worker.start - 1}, true, 0},
      {"gone", 0, self, {gone, 1}, true, 0},
      {"no id", 0, self, {1LL << 40, 1}, true, 0},
      {"not said yet", 99, self, {}, false, 0},
      {"not said in time", 11, {gone, 1}, {}, true, 0},
      {"may still say", 5, {gone, 1}, {}, false, 0},
  };
  for (const auto& [name, age, maker, does_work, finished, pid] : rows) {
    ORBO::TaskRecord record;
    record.created = (std::time(nullptr) - age) * 1000000000;
    std::tie(record.creator, record.worker) = std::tie(maker, does_work);
    Put(file, ORBO::ToTaskText(record));
    EXPECT_TRUE(task.reload() && task.isFinished() == finished) << name;
    EXPECT_EQ(pid, task.getCreatePid()) << name;
    EXPECT_EQ(pid == 0 ? ESRCH : 0, task.signalCreatePid(0)) << name;
  }
  ASSERT_TRUE(task.setCreatePid(child) && !task.setCreatePid(-1));
  kill(child, SIGKILL);
  siginfo_t info;
  ASSERT_EQ(0, waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT));
  EXPECT_TRUE(task.getCreatePid() == 0 && task.isFinished()) << "a zombie";
  Task writer("alice", "1");
  ASSERT_TRUE(Write(writer, "body", 1));
  EXPECT_FALSE(task.isFinished()) << "with an older body";
  EXPECT_TRUE(task.reload() && task.isFinished());
  EXPECT_TRUE(task.finish(false) && !task.setCreatePid(getpid())) << "nobody would signal it";
  StatusOf(child);
}

TEST_F(TaskManager, RecordsGoWhenTheirTimeIsOver) {
  root.Configure("task_grace=60");
  ASSERT_TRUE(Write(task, "a", 1) && task.remove());
  const std::string now =
      "3,\"autoRemove\":true,\"finished\":" + std::to_string(std::time(nullptr));
  const std::string wish = ",\"properties\":{\"auto_remove\":true}";
  const std::tuple<const char*, std::string, std::int64_t, bool> rows[] = {
      {"over", "3,\"autoRemove\":true,\"finished\":7", 61, false},
      {"new", now, 61, true},
      {"bad", "x", 61, false},
      {"bad-new", "x", 50, true},
      {"kept", "1,\"finished\":7" + wish, 999, true},
      {"gone", "3" + wish, 61, false},
      {"gone-new", "3" + wish, 50, true},
      {"gone-kept", "3", 999, true},
      {"works", "2,\"workerId\":" + std::to_string(getpid()) + wish, 999, true},
  };
  // A sweep that is due, one that is not yet, and one that is again.
  for (const bool swept : {true, false, true}) {
    for (const auto& [id, text, age, stays] : rows) {
      Put(File(id), "{\"created\":" + text + "}", age);
    }
    Put(directory + "/.new-x", "", 4000);
    TaskUtil::getUniqueID("alice", "");
    for (const auto& [id, text, age, stays] : rows) {
      EXPECT_EQ(stays || !swept, fs::exists(File(id))) << id;
    }
    EXPECT_EQ(!swept, fs::exists(directory + "/.new-x"));
    const TaskMgr manager("alice");
    EXPECT_EQ(R"(["gone-kept","gone-new"])", ToText(manager.getAllTaskId("gone")));
    EXPECT_EQ(R"(["kept","works","gone-kept","gone-new","new"])", ToText(manager.getAllTaskId("")));
    EXPECT_FALSE(fs::exists(File("over")) || fs::exists(File("gone")));
    Put(directory + "/.swept", "", swept ? 0 : 11);
  }
}

// Waits for a process that acts in another way each time, under a fire of signals.  A
// wait that is not woken lasts a minute.
bool WaitForEach() {
  const std::tuple<const char*, bool (*)(Task&), bool, bool> rows[] = {
      {"result", [](Task& task) { return Write(task, "body", 1); }, false, true},
      {"result and end", [](Task& task) { return Write(task, "body", 1); }, true, true},
      {"end", [](Task&) { return true; }, true, false},
      {"mark", [](Task& task) { return task.finish(true); }, false, false},
      {"removal", [](Task& task) { return task.remove(); }, false, false},
      {"nothing", [](Task&) { return true; }, false, false},
  };
  const itimerval interruptions = {{0, 7000}, {0, 7000}};
  std::signal(SIGALRM, [](int) {});
  setitimer(ITIMER_REAL, &interruptions, nullptr);
  const std::time_t begin = std::time(nullptr);
  for (const auto& [name, act, is_worker, expected] : rows) {
    Task task("alice", name);
    EXPECT_TRUE(Write(task, "info", 1) && (is_worker || task.setCreatePid(getpid())));
    const pid_t child = Fork([&task, act = act, is_worker = is_worker] {
      // So that most times the other one waits already, and again.
      return (!is_worker || task.setCreatePid(getpid())) && usleep(30000) == 0 &&
             Write(task, "other", 1) && usleep(30000) == 0 && act(task);
    });
    EXPECT_EQ(expected, task.waitForDataReady("body", *name == 'n' ? 2 : 60)) << name;
    EXPECT_EQ(0, StatusOf(child)) << name;
    EXPECT_FALSE(task.remove() && task.waitForDataReady("body", 60)) << name;
  }
  EXPECT_GT(50, std::time(nullptr) - begin);
  return !testing::Test::HasFailure();
}

TEST_F(TaskManager, WaitingEndsWithTheResultOrTheTask) {
  EXPECT_EQ(0, StatusOf(Fork(WaitForEach)));
  EXPECT_EQ(0, StatusOf(Fork([] {
              // The system refuses what waiting is best done with.
              sock_filter filter[] = {{BPF_LD | BPF_W | BPF_ABS, 0, 0, 0},
                                      {BPF_JMP | BPF_JEQ, 1, 0, SYS_inotify_add_watch},
                                      {BPF_JMP | BPF_JEQ, 0, 1, SYS_pidfd_open},
                                      {BPF_RET, 0, 0, SECCOMP_RET_ERRNO | EPERM},
                                      {BPF_RET, 0, 0, SECCOMP_RET_ALLOW}};
              const sock_fprog program = {std::size(filter), filter};
              EXPECT_EQ(0, prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0));
              EXPECT_EQ(0, prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program));
              return WaitForEach();
            })));
}

}  // namespace
}  // namespace KEP
