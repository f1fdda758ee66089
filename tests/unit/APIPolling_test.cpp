// Background tasks as handlers start and see them.

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <webapi/APIProgress.h>
#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "platform/task.h"
#include "platform/task_log.h"
#include "polling/APIPollingPrivate.h"
#include "unit/LogCapture.h"
#include "unit/WebAPIDirectory.h"
#include "unit/json.h"
#include "util/log_text.h"
#include "util/read_file.h"

namespace ORBO {
namespace {

namespace fs = std::filesystem;
using JSON::ToText;
using Work = void (*)(APIRequest*, APIResponse*, void*);

Json::Value Request(const std::string& user, const std::string& is_admin) {
  return FromText(
      R"({"getParam":{"api":"A.B","version":3,"method":"m","p":[1],"_sid":"s","tid":"t"},"session":{"username":")" +
      user + R"(","isAdmin":)" + is_admin + "}}");
}

void Succeed(APIRequest*, APIResponse* to, void*) { to->SetSuccess(1); }

void Throw() { throw 5; }
Json::Value Deep(std::size_t levels) {
  return FromText(std::string(levels, '[') + std::string(levels, ']'));
}

// Waits for all tasks' processes; the last one's exit status.
int Reap() {
  int status = -1;
  while (wait(&status) > 0) {
  }
  return status;
}

struct Polling : testing::Test {
  // The id of a task that is started.
  std::string Start(Work work) {
    EXPECT_TRUE(polling.Start(&response, work, nullptr));
    return response.GetBody()["data"]["task_id"].asString();
  }
  Json::Value Status(const std::string& id) {
    Json::Value status;
    EXPECT_TRUE(polling.Status(id, status));
    return status;
  }
  // Whether the task's record stays after the end.
  bool IsToStay(const std::string& id) const {
    std::string record;
    return ReadWholeFile(tasks + id + ".json", record) &&
           record.find(R"("autoRemove":false)") != std::string::npos;
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
  APIRequest ben{Request("ben", "false")};
  APIRequest ada{Request("ada", "true")};
  APIRequest nobody{Request("", "false")};
  APIRequest group{Request("@administrators", "false")};
  APIResponse response{&ben};
  APIPolling polling{&ben};
  const LogCapture log;
  std::size_t seen = 0;
};

TEST_F(Polling, TheOwnerIsTheUserOrTheGroup) {
  // With the error of the attribute, and the code of the start all the same; the owner is
  // "" where there is no start.
  const std::tuple<std::string, APIRequest*, int, int, std::string, const char*> rows[] = {
      {"", &ben, 500, 0, "ben", ""},
      {"everyone", &ben, 500, 0, "@users", ""},
      {"admin", &ada, 500, 0, "@administrators", ""},
      {"admin", &ben, 505, 105, "", "545 No permission;"},
      {"admin", nullptr, 505, 0, "", "545 No permission;163 unknown request;"},
      {"staff", &ada, 502, 114, "", "539 bad parameters;"},
      {"", &nobody, 500, 117, "", ""},
      {"", &group, 500, 117, "", ""},
  };
  for (const auto& [group_name, request, refusal, code, owner, logged] : rows) {
    SCOPED_TRACE(group_name + " " + owner);
    APIPollingPrivate started(request, nullptr);
    EXPECT_EQ(refusal == 500, started.SetGroupAttr(group_name));
    EXPECT_EQ(refusal, started.GetError());
    started.SetData("polling_attribute", "share_to_group", group_name, true);
    started.SetData("polling_attribute", "task_id_prefix", "p/", true);
    APIResponse answer(request);
    EXPECT_EQ(!owner.empty(), started.Start(&answer, Succeed, nullptr));
    EXPECT_EQ(code, answer.GetError());
    EXPECT_EQ(logged, Logged());
    const std::string id = answer.GetBody()["data"]["task_id"].asString();
    Json::Value status;
    if (!owner.empty() && started.Status(id, status)) {
      EXPECT_EQ(owner + "/p/", id.substr(0, id.size() - 22));
      EXPECT_EQ(R"({"api":"A.B","group":")" + group_name +
                    R"(","method":"m","param":{"p":[1]},"prefix":"p/","version":3})",
                ToText(status["info"]));
    }
  }
  EXPECT_FALSE(polling.Start(nullptr, Succeed, nullptr) || polling.Start(&response, nullptr, this));
  EXPECT_EQ("169 bad parameters;169 bad parameters;", Logged());
  EXPECT_TRUE(polling.GetError() == 502 && polling.SetRemoveParam(true));
  EXPECT_FALSE(Status(Start(Succeed))["info"].isMember("param"));
  Reap();
}

// What a client asks for, by a word and an id or a list of groups.
bool Act(const std::string& word, APIPolling& polling, const std::string& argument) {
  Json::Value out;
  return word == "status" ? polling.Status(argument, out)
         : word == "many" ? polling.Status(FromText(argument), out)
         : word == "stop" ? polling.Stop(argument, true)
                          : polling.List("", FromText(argument), out);
}

TEST_F(Polling, FailuresTellWhy) {
  const std::string nul("ben/x\0", 6);
  const std::string longest = "ben/" + std::string(4096, 'x');
  const std::string admins = "@administrators/1";
  const std::tuple<APIRequest*, std::string, std::string, int, std::string> rows[] = {
      {nullptr, "status", "ben/x", 502, "329 unknown request;"},
      {&ben, "status", "", 502, "335 bad parameters;"},
      {&ben, "status", "abc", 503, "342 Invalid task id[abc];"},
      {&ben, "status", "../1\n", 503, "98 Invalid task id;342 Invalid task id[../1?];"},
      {&ben, "status", nul, 503, "342 Invalid task id[ben/x?];"},
      {&ben, "status", admins, 503, "103 Permission denied;342 Invalid task id[" + admins + "];"},
      {&ada, "status", admins, 508, "348 No such task id[" + admins + "];"},
      {&ben, "status", "ben/../ben/x", 508, "348 No such task id[ben/../ben/x];"},
      {&ben, "status", longest, 508, "348 No such task id[" + LogText(longest) + "];"},
      {nullptr, "many", "[]", 502, "271 unknown request;"},
      {&ben, "many", "{}", 502, "277 bad parameters;"},
      {nullptr, "stop", "ben/x", 502, "382 unknown request;"},
      {&ben, "stop", "abc", 502, "388 Invalid task id[abc];"},
      {&ada, "stop", "ben/x", 503, "98 Invalid task id;"},
      {&ben, "stop", "ben/1", 508, "399 task id[ben/1] does not exist;"},
      {nullptr, "list", "[]", 502, "440 unknown request;"},
      {&ben, "list", "1", 502, "446 bad parameters;"},
      {&ben, "list", R"(["user","x"])", 503, ""},
      {&ben, "list", R"(["everyone","admin","x"])", 505, ""},
      {&nobody, "list", R"(["user"])", 504, "475 Cannot get task manager;"},
      {&group, "list", R"(["user"])", 504, "475 Cannot get task manager;"},
      {&group, "stop", admins, 503, "103 Permission denied;"},
  };
  for (const auto& [request, word, argument, error, logged] : rows) {
    SCOPED_TRACE(word + " " + logged);
    APIPolling asked(request);
    EXPECT_FALSE(Act(word, asked, argument));
    EXPECT_EQ(error, asked.GetError());
    EXPECT_EQ(logged, Logged());
  }
}

TEST_F(Polling, StatusOfManyPassesOverWhatIsNone) {
  const std::string id = Start(Succeed);
  Reap();
  Json::Value ids = FromText(R"(["", "bad", "ben/none", "ada/1", 5, null, {}, ["ben/1"]])");
  ids.append(id);
  EXPECT_TRUE(polling.Status(ids, ids));
  EXPECT_TRUE(ids.size() == 2 && ids[id] == Status(id) && ids["ben/none"] == FromText("{}"));
  EXPECT_TRUE(log.Has("APIPolling:292 Invalid task id[5]") && polling.GetError() == 500);
}

TEST_F(Polling, IdsAreJoined) {
  APIPollingPrivate rules(&ben, nullptr);
  const std::pair<const char*, const char*> rows[] = {{R"(["1","2"])", R"(["bob/1","bob/2"])"},
                                                      {R"({"a":"1"})", R"({"a":"bob/1"})"},
                                                      {R"("1")", R"("bob/1")"},
                                                      {"[]", "null"},
                                                      {R"("")", "null"},
                                                      {"5", "null"}};
  for (const auto& [ids, joined] : rows) {
    EXPECT_EQ(joined, ToText(rules.ConverToFullTaskId("bob", FromText(ids)))) << ids;
    EXPECT_EQ("null", ToText(rules.ConverToFullTaskId("", FromText(ids)))) << ids;
  }
}

TEST_F(Polling, StartReturnsWithTheFirstResultOrTheEnd) {
  const char* const none = R"({"error":{"code":117},"success":false})";
  const std::pair<Work, const char*> rows[] = {
      {[](auto*, auto* to, void*) { to->SetSuccess(1), to->SetError(7); },
       R"({"error":{"code":7},"success":false})"},
      {[](auto*, auto* to, void*) { to->SetSuccess(1), Throw(); }, R"({"data":1,"success":true})"},
      {[](auto*, auto*, void*) { Throw(); }, none},
      {[](auto*, auto* to, void*) { to->SetSuccess(std::string(17 << 20, 'x')); }, none},
      {[](auto*, auto* to, void*) { to->SetSuccess(1), to->SetSuccess(Deep(511)); }, none},
      {[](auto*, auto*, void*) {}, "{}"},
      {[](auto*, auto*, void*) { raise(SIGKILL); }, "{}"},
      {[](auto*, auto*, void*) { raise(SIGSEGV); }, "{}"},
  };
  const std::time_t begin = std::time(nullptr);
  for (const bool goes : {true, false}) {
    polling.SetRemoveAttr(goes);
    for (const auto& [work, expected] : rows) {
      SCOPED_TRACE(expected);
      const std::string id = Start(work);
      Reap();
      Json::Value body = Status(id);
      EXPECT_TRUE(body["finish"].asBool() && body["auto_remove"] == goes);
      for (const char* added : {"finish", "auto_remove", "info"}) {
        body.removeMember(added);
      }
      EXPECT_EQ(expected, ToText(body));
    }
  }
  EXPECT_GT(50, std::time(nullptr) - begin);
}

TEST_F(Polling, AStopSettlesWhatBecomesOfTheRecord) {
  static bool stops_early = false;
  // In the child, before it has said its id.
  pthread_atfork(nullptr, nullptr, [] {
    if (stops_early) {
      const std::string id = KEP::TaskMgr("ben").getAllTaskId("early")[0].asString();
      KEP::Task("ben", id.c_str()).finish(false);
    }
  });
  sigset_t term;
  sigemptyset(&term);
  sigaddset(&term, SIGTERM);
  sigprocmask(SIG_BLOCK, &term, nullptr);
  const Work work = [](APIRequest* request, APIResponse* to, void*) {
    to->SetSuccess(signal(SIGTERM, [](int) {}) == SIG_DFL);
    KEP::Task own("ben", request->GetPollingTaskId().substr(4).c_str());
    while (!own.isMarkedFinished() && own.reload()) {
      usleep(1000);
    }
  };
  const auto of_host = signal(SIGTERM, SIG_IGN);
  std::string ids[] = {Start(work), ""};
  EXPECT_TRUE(Status(ids[0])["data"].asBool() && polling.Stop(ids[0], false) && Reap() == 0);
  stops_early = polling.SetPrefixAttr("early");
  ids[1] = Start(work);
  stops_early = false;
  EXPECT_TRUE(Reap() == 0 && !Status(ids[1]).isMember("data")) << "nobody could stop it";
  signal(SIGTERM, of_host);
  sigprocmask(SIG_UNBLOCK, &term, nullptr);
  for (const std::string& id : ids) {
    EXPECT_TRUE(IsToStay(id)) << id;
  }
}

TEST_F(Polling, TheWorkHasASessionAnEndAndTasksOfItsOwn) {
  static std::string mark;
  static pid_t starter;
  mark = tasks + "exit-handler";
  starter = getpid();
  std::atexit([] { getpid() == starter || std::ofstream(mark); });
  polling.SetRemoveAttr(false);
  const std::string id = Start([](APIRequest* request, APIResponse* to, void*) {
    to->SetSuccess("outer");
    APIPolling(request).Start(
        to,
        [](APIRequest* of_task, APIResponse* inner, void*) {
          inner->SetSuccess(getsid(0) == getpid() ? of_task->GetPollingTaskId() : "");
        },
        nullptr);
    Reap();
  });
  EXPECT_EQ(0, Reap());
  const std::string inner = Status(id)["data"]["task_id"].asString();
  EXPECT_TRUE(IsToStay(id));
  EXPECT_EQ(inner, Status(inner)["data"].asString());
  EXPECT_FALSE(inner == id || fs::exists(mark) || ben.IsPollingTask());
}

TEST_F(Polling, StopMarksATaskThatIgnoresIt) {
  const std::string id = Start([](auto*, APIResponse* to, void*) {
    signal(SIGTERM, SIG_IGN);
    to->SetSuccess(getpid());
    pause();
  });
  EXPECT_TRUE(!Status(id)["finish"].asBool() && polling.Stop(id, false));
  EXPECT_TRUE(Status(id)["finish"].asBool());
  const pid_t pid = Status(id)["data"].asInt();
  ASSERT_LT(1, pid) << "which names no group of processes";
  EXPECT_EQ(0, kill(pid, SIGKILL));
  EXPECT_EQ(SIGKILL, Reap());
  APIPollingPrivate rules(&ben, nullptr);
  EXPECT_TRUE(rules.DoKill(pid) && !rules.DoKill(0));
  EXPECT_EQ("117 invalid process id;", Logged());
  EXPECT_TRUE(polling.Stop(id, true)) << "gone already";
  fs::permissions(tasks + "ben", fs::perms::others_all, fs::perm_options::add);
  EXPECT_FALSE(polling.Stop(id, true) || polling.GetError() != 501);
  EXPECT_TRUE(log.Has("APIPolling:418 set task id[" + id + "] to finish fail"));
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
