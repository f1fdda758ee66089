#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <webapi/APIRunner.h>

#include <iostream>
#include <sstream>

#include "runner/APIRunnerPrivate.h"
#include "unit/LogCapture.h"
#include "unit/WebAPIDirectory.h"
#include "unit/json.h"

// Runners have no virtual destructor.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace ORBO {
namespace {

std::string TaskName() {
  char name[17] = {};
  prctl(PR_GET_NAME, name);
  return name;
}

class Runner : public testing::Test {
 protected:
  void SetUp() override {
    const std::string good = TestModule("good");
    Describe("ORBO.Test.Good", good, R"({"1":["echo","silent","throw","process","redirect",
        "checked","refused","check_throws","not_in_table",
        {"open":{"allowUpload":true,"allowDownload":true}}]})");
    Describe("ORBO.Test.NoFile", "/nowhere/lib.so", R"({"1":["get"]})");
    Describe("ORBO.Test.NoTable", "libc.so.6", R"({"1":["get"]})");
    Describe("ORBO.Test.NullTable", TestModule("null_table"), R"({"1":["get"]})");
    Describe("ORBO.Test.HalfMade", TestModule("half_made"), R"({"1":["get"]})");
    directory_.Write("ORBO.Test.lib", JSON::ToText(descriptions_));
  }

  void Describe(const std::string& api, const std::string& lib, const std::string& methods) {
    descriptions_[api] = FromText(R"({"minVersion":1,"maxVersion":1,"methods":)" + methods + "}");
    descriptions_[api]["lib"] = lib;
  }

  static Json::Value Options(const std::string& api, const std::string& method,
                             const std::string& parameters = "{}") {
    Json::Value options(Json::objectValue);
    options["postParam"] = FromText(parameters);
    options["postParam"]["api"] = api;
    options["postParam"]["version"] = 1;
    options["postParam"]["method"] = method;
    return options;
  }

  static Json::Value Call(const std::string& method, const std::string& parameters = "{}") {
    APIRunner runner;
    runner.Run(Options("ORBO.Test.Good", method, parameters));
    return runner.GetResponse();
  }

  static int ErrorOf(const Json::Value& body) {
    return body["success"].asBool() ? 0 : body["error"].get("code", -1).asInt();
  }

  WebAPIDirectory directory_;
  Json::Value descriptions_{Json::objectValue};
};

TEST_F(Runner, UnusableOptionsAreRefused) {
  for (const char* options :
       {"null", "[]", R"({"postParam":{"version":1}})", R"({"postParam":[1,2]})", "\"x\"",
        R"({"postParam":{"api":"ORBO.Test.Good","version":1,"method":"echo","relay_ds":1}})"}) {
    APIRunner runner;
    runner.Run(FromText(options));
    EXPECT_EQ(101, ErrorOf(runner.GetResponse())) << options;
  }
}

TEST_F(Runner, AnswersWhatHandlersAndChecksLeave) {
  const std::tuple<const char*, const char*, int> rows[] = {
      {"silent", "{}", 117},
      {"not_in_table", "{}", 121},
      {"throw", "{}", 117},
      {"throw", R"({"odd":1})", 117},
      {"throw", R"({"result":1})", 1234},
      {"redirect", "{}", 117},
      {"check_throws", "{}", 117},
      {"refused", "{}", 117},
      {"checked", "{}", 0},
      {"checked", R"({"odd":1})", 1001},
      {"checked", R"({"fallback":1})", 0},
      {"echo", R"({"fallback":1})", 1002},
  };
  std::streambuf* const output = std::cout.rdbuf();
  std::streambuf* const input = std::cin.rdbuf();
  LogCapture log;
  for (const auto& [method, parameters, error] : rows) {
    EXPECT_EQ(error, ErrorOf(Call(method, parameters))) << method << parameters;
  }
  EXPECT_TRUE(log.Has("ended by an exception: on purpose"));
  EXPECT_EQ(output, std::cout.rdbuf());
  EXPECT_EQ(input, std::cin.rdbuf());
}

TEST_F(Runner, UnusableLibrariesAreReported) {
  const std::pair<const char*, const char*> rows[] = {
      {"ORBO.Test.NoFile", " cannot open library: /nowhere/lib.so. error = "},
      {"ORBO.Test.NoTable", " Get API Table Fail"},
      {"ORBO.Test.NullTable", " cannot get api table"},
      {"ORBO.Test.HalfMade", "half_made.so. error = on purpose"},
  };
  for (const auto& [api, text] : rows) {
    LogCapture log;
    APIRunner runner;
    for (int attempt = 0; attempt < 2; ++attempt) {
      runner.Run(Options(api, "get"));
      EXPECT_EQ(111, ErrorOf(runner.GetResponse())) << api;
    }
    EXPECT_TRUE(log.Has(text)) << text;
  }
}

TEST_F(Runner, StreamsAreCutOffUnlessTheMethodAllowsThem) {
  std::istringstream input("a line\nanother\n");
  std::ostringstream output;
  std::streambuf* const cin_buffer = std::cin.rdbuf(input.rdbuf());
  std::streambuf* const cout_buffer = std::cout.rdbuf(output.rdbuf());
  std::cin.setstate(std::ios::eofbit);
  std::cout.exceptions(std::ios::badbit);
  const Json::Value closed = Call("process");
  const bool state_kept = std::cin.eof() && std::cout.exceptions() == std::ios::badbit;
  std::cout.exceptions(std::ios::goodbit);
  std::cin.clear();
  const Json::Value open = Call("open");
  std::string next;
  std::getline(std::cin, next);
  std::cin.rdbuf(cin_buffer);
  std::cout.rdbuf(cout_buffer);

  EXPECT_TRUE(state_kept);
  EXPECT_EQ("", closed["data"]["input"].asString());
  EXPECT_EQ("a line", open["data"]["input"].asString());
  EXPECT_EQ("another", next);
  EXPECT_EQ("from the handler", output.str());
}

TEST_F(Runner, PriorityHoldsForTheHandlerAlone) {
  const int before = getpriority(PRIO_PROCESS, 0);
  descriptions_["ORBO.Test.Good"]["priority"] = before + 3;
  directory_.Write("ORBO.Test.lib", JSON::ToText(descriptions_));
  EXPECT_EQ(before + 3, Call("process")["data"]["nice"].asInt());
  if (geteuid() == 0) {  // an ordinary user cannot raise the priority again
    EXPECT_EQ(before, getpriority(PRIO_PROCESS, 0));
  }
}

TEST_F(Runner, OptionsFillTheRequestAboveTheProcessEnvironment) {
  setenv("WEBAPI_UNIT_TEST", "process", 1);
  struct Probe : APIRunner {
    bool NeedPermission(APIRequest* request) override {
      for (const char* name : {"WEBAPI_UNIT_TEST", "GIVEN"}) {
        seen += request->GetEnv(name, "none").asString() + " ";
      }
      seen += request->GetLoginUserName() + request->GetAttr("a", Json::Value()).asString();
      return false;
    }
    std::string seen;
  } runner;
  Json::Value options = Options("ORBO.Test.Good", "echo");
  options["environ"]["GIVEN"] = "options";
  options["session"]["username"] = "alice";
  options["attr"]["a"] = "b";
  runner.Run(options);
  unsetenv("WEBAPI_UNIT_TEST");
  EXPECT_EQ("process options aliceb", runner.seen);
}

TEST(ProcessIdentity, NamesTheCallAndThenTheProgram) {
  char argument[] = "/usr/bin/some_program_name";
  char* arguments[] = {argument, nullptr};
  {
    APIRunner runner;
    runner.SetArgs(1, arguments);
    APIRequest request(FromText(R"({"getParam":{"api":"A.B\n.C","version":1,"method":"list"}})"));
    APIResponse response(&request);
    EXPECT_TRUE(runner.SetProcessName(&request, &response));
    EXPECT_EQ("webapi_unit_tests_A.B?.C[1].list", LogIdentity());
    EXPECT_EQ(LogIdentity().substr(0, sizeof argument - 2), argument);
    EXPECT_EQ("A.B?.C[1].list", TaskName());
  }
  EXPECT_EQ("webapi_unit_tests webapi_unit_tes", LogIdentity() + " " + TaskName());
  EXPECT_STREQ("webapi_unit_tests", argument);
}

TEST(ProcessIdentity, EntryProgramsShareOneBoundedName) {
  APIRunnerPrivate identity(nullptr);
  identity.GetOrigProcName() = "foo_entry.cgi";
  char argument[] = "x";
  char* arguments[] = {argument, nullptr};
  identity.SetArgs(1, arguments);
  EXPECT_TRUE(identity.ShowCall(std::string(5000, 'n'), 1, "m"));
  EXPECT_EQ(0U, LogIdentity().rfind("entry.cgi_nnn", 0));
  EXPECT_LT(LogIdentity().size(), 1024U);
  identity.ShowProgram();
  EXPECT_EQ("foo_entry.cgi", LogIdentity());
}

}  // namespace
}  // namespace ORBO
