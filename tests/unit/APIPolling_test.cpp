// Background tasks as handlers start and see them.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <webapi/APIProgress.h>
#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "platform/task.h"
#include "platform/task_log.h"
#include "polling/APIPollingPrivate.h"
#include "unit/LogCapture.h"
#include "unit/WebAPIDirectory.h"
#include "unit/json.h"
#include "util/log_text.h"

namespace {

bool g_refuse_signals = false;

}  // namespace

// Stands before the C library's own.
extern "C" int kill(pid_t pid, int signal_number) noexcept {
  errno = EPERM;
  return g_refuse_signals ? -1 : static_cast<int>(syscall(SYS_kill, pid, signal_number));
}

namespace ORBO {
namespace {

namespace fs = std::filesystem;
using JSON::ToText;

Json::Value Request(const std::string& user, bool is_admin) {
  return FromText(R"({"getParam":{"api":"A.B","version":3,"method":"m","p":[1]},
      "session":{"username":")" +
                  user + R"(","isAdmin":)" + (is_admin ? "true}}" : "false}}"));
}

struct Step {
  char letter;
  void (*take)(APIRequest*, APIResponse*);
};

constexpr Step kSteps[] = {
    {'1', [](APIRequest*, APIResponse* to) { to->SetSuccess(1); }},
    {'7', [](APIRequest*, APIResponse* to) { to->SetError(7, "x"); }},
    {'p', [](APIRequest*, APIResponse* to) { to->SetSuccess(getpid()); }},
    {'u', [](APIRequest* from, APIResponse* to) { to->SetSuccess(from->GetPollingTaskId()); }},
    {'l', [](APIRequest*, APIResponse* to) { to->SetSuccess(getsid(0) == getpid()); }},
    {'t', [](APIRequest*, APIResponse*) { throw 5; }},
    {'k', [](APIRequest*, APIResponse*) { std::raise(SIGKILL); }},
    {'s', [](APIRequest*, APIResponse*) { std::raise(SIGSEGV); }},
    {'i', [](APIRequest*, APIResponse*) { std::signal(SIGTERM, SIG_IGN); }},
    {'w', [](APIRequest*, APIResponse*) { pause(); }},
};

// Work that takes the steps of the text `letters`.
void Work(APIRequest* request, APIResponse* task_response, void* letters) {
  for (const char letter : std::string(static_cast<const char*>(letters))) {
    std::find_if(std::begin(kSteps), std::end(kSteps), [letter](const Step& step) {
      return step.letter == letter;
    })->take(request, task_response);
  }
}

// Waits for all tasks' processes; the last one's exit status.
int Reap() {
  int status = -1;
  while (wait(&status) > 0) {
  }
  return status;
}

struct Polling : testing::Test {
  std::string Start(const char* steps) {
    text = steps;
    EXPECT_TRUE(polling.Start(&response, Work, text.data()));
    return response.GetBody()["data"]["task_id"].asString();
  }
  Json::Value Status(const std::string& id) {
    Json::Value status;
    EXPECT_TRUE(polling.Status(id, status));
    return status;
  }
  // What was logged since the last time, without the source's name.
  std::string Logged() {
    std::string lines;
    for (; seen < log.lines().size(); ++seen) {
      lines += log.lines()[seen].substr(std::string("APIPolling:").size()) + ";";
    }
    return lines;
  }

  const WebAPIDirectory root;
  const std::string tasks = std::string(std::getenv("WEBAPI_ROOT")) + "/run/orbo/tasks/";
  APIRequest ben{Request("ben", false)};
  APIRequest ada{Request("ada", true)};
  APIRequest nobody{Request("", false)};
  APIResponse response{&ben};
  APIPolling polling{&ben};
  std::string text;
  const LogCapture log;
  std::size_t seen = 0;
};

TEST_F(Polling, TheOwnerIsTheUserOrTheGroup) {
  const struct {
    const char* group;
    APIRequest* request;
    int refusal;        // of the attribute
    int code;           // of the start all the same
    const char* owner;  // "" where there is no start
    const char* log;
  } rows[] = {
      {"", &ben, 500, 0, "ben", ""},
      {"everyone", &ben, 500, 0, "@users", ""},
      {"admin", &ada, 500, 0, "@administrators", ""},
      {"admin", &ben, 505, 105, "", "545 No permission;"},
      {"admin", nullptr, 505, 0, "", "545 No permission;163 unknown request;"},
      {"staff", &ada, 502, 114, "", "539 bad parameters;"},
      {"", &nobody, 500, 117, "", ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.group) + " " + row.owner);
    APIPollingPrivate started(row.request, nullptr);
    EXPECT_EQ(row.refusal == 500, started.SetGroupAttr(row.group));
    EXPECT_EQ(row.refusal, started.GetError());
    started.SetData("polling_attribute", "share_to_group", row.group, true);
    started.SetData("polling_attribute", "task_id_prefix", "p/", true);
    APIResponse answer(row.request);
    EXPECT_EQ(*row.owner != '\0', started.Start(&answer, Work, (text = "1").data()));
    EXPECT_EQ(row.code, answer.GetError());
    EXPECT_EQ(row.log, Logged());
    Reap();
    const std::string id = answer.GetBody()["data"]["task_id"].asString();
    Json::Value status;
    if (*row.owner != '\0' && started.Status(id, status)) {
      EXPECT_EQ(std::string(row.owner) + "/p/", id.substr(0, id.size() - 22));
      EXPECT_EQ(R"({"api":"A.B","group":")" + std::string(row.group) +
                    R"(","method":"m","param":{"p":[1]},"prefix":"p/","version":3})",
                ToText(status["info"]));
    }
  }
  EXPECT_FALSE(polling.Start(nullptr, Work, nullptr) || polling.Start(&response, nullptr, nullptr));
  EXPECT_EQ("169 bad parameters;169 bad parameters;", Logged());
  EXPECT_TRUE(polling.GetError() == 502 && polling.SetRemoveParam(true));
  for (const bool goes : {true, false}) {
    EXPECT_TRUE(polling.SetRemoveAttr(goes));
    const std::string id = Start("1");
    Reap();
    EXPECT_FALSE(Status(id)["info"].isMember("param"));
    EXPECT_EQ(goes, Status(id)["auto_remove"].asBool());
    std::ifstream file(tasks + id + ".json");
    const std::string record{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(goes, record.find(R"("autoRemove":true)") != std::string::npos) << record;
  }
}

// What a client asks for, by a word and an id or a list of groups.
bool Act(const std::string& word, APIPolling& polling, const std::string& argument,
         Json::Value& out) {
  return word == "status" ? polling.Status(argument, out)
         : word == "many" ? polling.Status(FromText(argument), out)
         : word == "stop" ? polling.Stop(argument, true)
                          : polling.List("", FromText(argument), out);
}

TEST_F(Polling, FailuresTellWhy) {
  KEP::Task task("ben", "kept");
  ASSERT_TRUE(task.beginUpdate() && task.endUpdate());
  const std::string nul("ben/kept\0", 9);
  const std::string longest = "ben/" + std::string(4096, 'x');
  const std::string admins = "@administrators/1";
  const struct {
    APIRequest* request;
    std::string word;
    std::string argument;
    int error;
    std::string log;
  } rows[] = {
      {nullptr, "status", "ben/kept", 502, "329 unknown request;"},
      {&ben, "status", "", 502, "335 bad parameters;"},
      {&ben, "status", "abc", 503, "342 Invalid task id[abc];"},
      {&ben, "status", "x/1\n", 503, "98 Invalid task id;342 Invalid task id[x/1?];"},
      {&ben, "status", nul, 503, "342 Invalid task id[ben/kept?];"},
      {&ben, "status", admins, 503, "103 Permission denied;342 Invalid task id[" + admins + "];"},
      {&ada, "status", admins, 508, "348 No such task id[" + admins + "];"},
      {&ben, "status", "ben/../ben/kept", 508, "348 No such task id[ben/../ben/kept];"},
      {&ben, "status", "../x", 503, "98 Invalid task id;342 Invalid task id[../x];"},
      {&ben, "status", longest, 508, "348 No such task id[" + LogText(longest) + "];"},
      {nullptr, "many", "[]", 502, "271 unknown request;"},
      {&ben, "many", "{}", 502, "277 bad parameters;"},
      {nullptr, "stop", "ben/kept", 502, "382 unknown request;"},
      {&ben, "stop", "abc", 502, "388 Invalid task id[abc];"},
      {&ben, "stop", nul, 502, "388 Invalid task id[ben/kept?];"},
      {&ben, "stop", admins, 503, "103 Permission denied;"},
      {&ben, "stop", "ben/1", 508, "399 task id[ben/1] does not exist;"},
      {nullptr, "list", "[]", 502, "440 unknown request;"},
      {&ben, "list", "1", 502, "446 bad parameters;"},
      {&ben, "list", R"(["user","x"])", 503, ""},
      {&ben, "list", R"(["everyone","admin","user"])", 505, ""},
      {&nobody, "list", R"(["user"])", 504, "475 Cannot get task manager;"},
  };
  Json::Value out;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.word + " " + row.log);
    APIPolling asked(row.request);
    EXPECT_FALSE(Act(row.word, asked, row.argument, out));
    EXPECT_EQ(row.error, asked.GetError());
    EXPECT_EQ(row.log, Logged());
  }
  EXPECT_EQ(R"({"everyone":null,"user":["ben/kept"]})", ToText(out));
  EXPECT_TRUE(task.setCreatePid(getpid()) && (g_refuse_signals = true));
  EXPECT_FALSE(polling.Stop("ben/kept", true) || polling.GetError() != 506);
  g_refuse_signals = false;
  EXPECT_EQ("121 Failed to kill " + std::to_string(getpid()) +
                ", reason=Operation not permitted(1);"
                "412 send SIGTERM to task id[ben/kept] fail;",
            Logged());
  fs::permissions(tasks + "ben", fs::perms::others_all, fs::perm_options::add);
  EXPECT_FALSE(polling.List("", FromText(R"(["user"])"), out) || polling.GetError() != 504);
}

TEST_F(Polling, StatusOfManyPassesOverWhatIsNone) {
  const std::string id = Start("1");
  Reap();
  Json::Value ids = FromText(R"(["", "bad", "ben/none", "ada/1", 5, null, {}, ["ben/1"]])");
  ids.append(id);
  EXPECT_TRUE(polling.Status(ids, ids));
  EXPECT_TRUE(ids.size() == 2 && ids[id] == Status(id) && ids["ben/none"] == FromText("{}"));
  EXPECT_TRUE(log.Has("APIPolling:292 Invalid task id[5]") && polling.GetError() == 500);
}

TEST_F(Polling, IdsAreSplitAndJoined) {
  APIPollingPrivate rules(&ben, nullptr);
  const char* const splits[][3] = {
      {"bob/abc", "bob", "abc"}, {"a/b/c", "a", "b/c"}, {"abc", "", ""}, {"a/", "a", ""}};
  for (const auto& row : splits) {
    std::string user;
    std::string id;
    EXPECT_EQ(*row[1] != '\0', rules.GetUserAndTaskID(row[0], user, id)) << row[0];
    EXPECT_TRUE(user == row[1] && id == row[2]) << row[0];
  }
  const std::pair<const char*, const char*> joins[] = {{R"(["1","2"])", R"(["bob/1","bob/2"])"},
                                                       {R"({"a":"1"})", R"({"a":"bob/1"})"},
                                                       {R"("1")", R"("bob/1")"},
                                                       {"[]", "null"},
                                                       {R"("")", "null"},
                                                       {"5", "null"}};
  for (const auto& [ids, joined] : joins) {
    EXPECT_EQ(joined, ToText(rules.ConverToFullTaskId("bob", FromText(ids)))) << ids;
    EXPECT_EQ("null", ToText(rules.ConverToFullTaskId("", FromText(ids)))) << ids;
  }
}

TEST_F(Polling, StartReturnsWithTheFirstResultOrTheEnd) {
  const char* const rows[][2] = {
      {"1", R"({"data":1,"success":true})"},
      {"17", R"({"error":{"code":7,"errors":"x"},"success":false})"},
      {"1t", R"({"data":1,"success":true})"},
      {"t", R"({"error":{"code":117},"success":false})"},
      {"", "{}"},
      {"k", "{}"},
      {"s", "{}"},
  };
  const std::time_t begin = std::time(nullptr);
  for (const auto& row : rows) {
    SCOPED_TRACE(row[0]);
    const std::string id = Start(row[0]);
    Reap();
    Json::Value body = Status(id);
    EXPECT_TRUE(body["finish"].asBool());
    for (const char* added : {"finish", "auto_remove", "info"}) {
      body.removeMember(added);
    }
    EXPECT_EQ(row[1], ToText(body));
  }
  EXPECT_GT(50, std::time(nullptr) - begin);
}

TEST_F(Polling, TheWorkSharesNothingWithItsStarter) {
  static std::string mark;
  static pid_t starter;
  mark = std::string(std::getenv("WEBAPI_ROOT")) + "/exit-handler";
  starter = getpid();
  std::atexit([] { getpid() == starter || std::ofstream(mark); });
  const std::string path = std::string(std::getenv("WEBAPI_ROOT")) + "/output";
  std::FILE* const output = std::fopen(path.c_str(), "w");
  std::fputs("once", output);
  const std::string id = Start("u");
  EXPECT_EQ(id, Status(id)["data"].asString());
  EXPECT_TRUE(Status(Start("l"))["data"].asBool()) << "a session of its own";
  EXPECT_EQ(0, Reap());
  std::fclose(output);
  EXPECT_FALSE(fs::exists(mark) || ben.IsPollingTask());
  EXPECT_EQ(4U, fs::file_size(path));
}

TEST_F(Polling, StopEndsTheProcessAndMarksTheTask) {
  for (const char* steps : {"pw", "ipw"}) {
    const std::string id = Start(steps);
    const pid_t pid = Status(id)["data"].asInt();
    EXPECT_FALSE(Status(id)["finish"].asBool());
    EXPECT_TRUE(polling.Stop(id, false) && Status(id)["finish"].asBool());
    EXPECT_EQ(0, kill(pid, *steps == 'i' ? SIGKILL : 0)) << "ended and not waited for, or not";
    EXPECT_EQ(*steps == 'i' ? SIGKILL : SIGTERM, Reap());
    EXPECT_TRUE(polling.Stop(id, true)) << "gone already";
  }
}

TEST_F(Polling, ProgressIsToldNowAndThen) {
  APIProgress progress(&response, 8);
  Json::Value facts;
  // What is told, without the times.
  const auto told = [this, &facts] {
    Json::Value rest = facts = response.GetBody()["data"]["progress"];
    rest.removeMember("started");
    rest.removeMember("estimated_end");
    return ToText(rest);
  };
  progress.Update(0, "begin");
  progress.Update(1);
  EXPECT_EQ(R"({"done":0,"message":"begin","percent":0.0,"total":8})", told()) << "not so often";
  EXPECT_FALSE(facts.isMember("estimated_end"));
  usleep(600000);
  progress.Update(1);
  EXPECT_EQ(R"({"done":1,"percent":12.5,"total":8})", told());
  EXPECT_LE(4, facts["estimated_end"].asInt64() - facts["started"].asInt64());
  progress.SetTotal(0);
  progress.Update(5);
  progress.Finish(FromText(R"({"sum":1})"));
  EXPECT_EQ(R"({"done":5,"percent":100})", told());
  EXPECT_EQ(1, response.GetBody()["data"]["sum"].asInt());
}

TEST_F(Polling, TheLogIsBoundedAndItsOffsetsStay) {
  KEP::Task task("ben", "1");
  ASSERT_TRUE(task.beginUpdate() && task.endUpdate());
  APIRequest work(
      FromText(R"({"environ":{"task_user":"ben","task_id":"1","full_task_id":"ben/1"}})"));
  APIPolling writer(&work);
  Json::Value part;
  const auto read = [&](std::uint64_t offset) {
    EXPECT_TRUE(polling.ReadLog("ben/1", offset, part));
    return part["text"].asString();
  };
  EXPECT_FALSE(polling.WriteLog("x") || polling.GetError() != 502) << "no task";
  EXPECT_EQ("", read(7));
  ASSERT_TRUE(writer.WriteLog("ab\n"));
  read(1);
  EXPECT_EQ(R"({"finish":false,"next":3,"offset":1,"text":"b\n"})", ToText(part));
  for (int i = 0; i < 300; ++i) {
    ASSERT_TRUE(writer.WriteLog(std::to_string(1000 + i) + std::string(995, '.') + "\n"));
  }
  EXPECT_EQ("99" + std::string(995, '.') + "\n", read(299005));
  const std::string kept = read(0);
  EXPECT_EQ(300003U, part["next"].asUInt());
  EXPECT_EQ(part["next"].asUInt(), part["offset"].asUInt() + kept.size());
  EXPECT_EQ(std::to_string(1000 + part["offset"].asUInt() / 1000), kept.substr(0, 4));
  EXPECT_TRUE(kept.size() > 100000 && kept.size() <= KEP::TaskUtil::kLargestTaskLog);

  const std::string file = tasks + "ben/1.log";
  if (fork() == 0) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit full{fs::file_size(file) + 3, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &full);
    _exit(writer.WriteLog("lost\n") || writer.GetError() != 504 ? 1 : 0);
  }
  EXPECT_EQ(0, Reap());
  EXPECT_EQ(kept, read(0));

  ASSERT_TRUE(writer.WriteLog(std::string(1 << 20, 'x') + "end\n"));
  EXPECT_EQ("xend\n", read(part["next"].asUInt() + (1 << 17) - 5));
  EXPECT_LE(read(0).size(), KEP::TaskUtil::kLargestTaskLog);
  EXPECT_TRUE(task.remove() && !fs::exists(file));
  EXPECT_FALSE(writer.WriteLog("x") || fs::exists(file) || polling.ReadLog("ben/1", 0, part));
}

}  // namespace
}  // namespace ORBO
