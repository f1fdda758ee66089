// Calls within a call: compound requests, and calls inside the process.

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <unistd.h>
#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>
#include <webapi/APIRunner.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "platform/linux/session_store.h"
#include "response/APIResponsePrivate.h"
#include "unit/LogCapture.h"
#include "unit/WebAPIDirectory.h"
#include "unit/entry_run.h"
#include "unit/json.h"
#include "util/json_types.h"

namespace ORBO {
namespace {

constexpr char kEntry[] = R"({"api":"ORBO.Entry.Request","version":1,"method":"request"})";

// A call of the test module's, with the members `more`.
std::string Call(const std::string& method, const std::string& more = "") {
  return R"({"api":"ORBO.Test.Caller","version":1,"method":")" + method + "\"" + more + "}";
}

class Compound : public testing::Test {
 protected:
  void SetUp() override {
    directory_.Write("lib.def", R"({"authLevel":1,"methods":{}})");
    directory_.Write("ORBO.Entry.lib", R"({"ORBO.Entry.Request":{"lib":"built-in","minVersion":1,
        "maxVersion":1,"authLevel":0,"methods":{"1":["request","other"]}}})");
    Describe("0");
  }

  void Describe(const std::string& level) {
    const std::string lib = R"({"lib":")" + TestModule("caller") + R"(","minVersion":1,)";
    directory_.Write("ORBO.Test.lib", R"({"ORBO.Test.Open":)" + lib + R"("maxVersion":1,
        "authLevel":0,"methods":{"1":["who"]}},"ORBO.Test.Caller":)" +
                                          lib + R"("maxVersion":1,"authLevel":)" + level +
                                          R"(,"allowUser":["normal.local","admin.local"],
        "methods":{"1":["who","ask","call","fail","fresh",{"admin":{"allowUser":["admin.local"]}},
        {"up":{"allowUpload":true}},{"down":{"allowDownload":true}}]}}})");
  }

  // Runs `compound`, JSON text, in a runner whose caller is ada.
  static Json::Value Run(const std::string& compound, const std::string& more = "{}") {
    Json::Value options(Json::objectValue);
    options["postParam"] = FromText(kEntry);
    options["postParam"]["compound"] = FromText(compound);
    const Json::Value members = FromText(more);
    for (auto member = members.begin(); member != members.end(); ++member) {
      options["postParam"][member.name()] = *member;
    }
    options["session"] = FromText(R"({"username":"ada","isAdmin":true,"isAuthorized":true})");
    APIRunner runner;
    runner.Run(options);
    return runner.GetResponse();
  }

  // The error codes of a compound answer's elements, and has_fail at the end.
  static std::string Codes(const Json::Value& body) {
    std::string codes;
    for (const Json::Value& element : body["data"]["result"]) {
      codes += element["success"].asBool() ? "0 " : element["error"]["code"].asString() + " ";
    }
    return codes + (body["data"]["has_fail"].asBool() ? "failed" : "fine");
  }

  static std::string Cwd() { return std::filesystem::current_path(); }

  WebAPIDirectory directory_;
  LogCapture log_;
};

TEST_F(Compound, EveryElementIsAnsweredInOrder) {
  const std::string who = Call("who");
  const std::tuple<const char*, std::string, const char*, const char*> rows[] = {
      {"a failure in the middle", "[" + who + "," + Call("no") + "," + who + "]", "{}",
       "0 103 0 failed"},
      {"stop", "[" + who + "," + Call("no") + "," + who + ",5]", R"({"stop_when_error":true})",
       "0 103 112 112 failed"},
      {"upload and download", "[" + Call("up") + "," + Call("down") + "," + who + "]", "{}",
       "113 113 0 failed"},
      {"no names of its own after one that has them",
       "[" + who + R"(,{},{"version":1,"method":"who"},5,null,"x",[1],{"api":"ORBO.Test.Caller"}])",
       "{}", "0 101 101 101 101 101 101 101 failed"},
      {"not described", R"([{"api":"ORBO.Other","version":1,"method":"m"}])", "{}", "102 failed"},
      {"relay", "[" + Call("who", R"(,"relay_ds":1)") + "]", "{}", "109 failed"},
      {"method of no table", "[" + who + "," + Call("admin") + "]", "{}", "0 121 failed"},
      {"a handler's own error", "[" + Call("fail") + "," + who + "]", R"({"stop_when_error":true})",
       "1001 112 failed"},
      {"a check that reads the error of a fresh response", "[" + who + "," + Call("fresh") + "]",
       "{}", "0 0 fine"},
      {"refused without an error",
       "[" + who + R"(,{"api":"ORBO.Entry.Request","version":1,"method":"other"}])", "{}",
       "0 117 failed"},
  };
  for (const auto& [name, compound, more, codes] : rows) {
    SCOPED_TRACE(name);
    const Json::Value body = Run(compound, more);
    EXPECT_TRUE(body["success"].asBool());
    EXPECT_EQ(codes, Codes(body));
  }
  directory_.Write("lib.def", R"({"methods":{"allowUpload":true}})");
  EXPECT_EQ("101 113 failed", Codes(Run(R"([{"api":"ORBO.Test.Caller"},)" + who + "]")));
}

TEST_F(Compound, ElementsShareTheCallerAndNothingElse) {
  const Json::Value body = Run("[" + Call("who", R"(,"left":"over")") + "," + Call("who") + "]");
  Json::Value expected = FromText(R"({"user":"ada","admin":true,"privilege":false,"classes":9,
                                      "method":"POST","left":"over"})");
  EXPECT_EQ(expected, body["data"]["result"][0]["data"]);
  expected["left"] = Json::Value();
  EXPECT_EQ(expected, body["data"]["result"][1]["data"]);
}

TEST_F(Compound, WhatCallsAskForReachesTheWhole) {
  const std::string ask = Call("ask");
  const std::string who = Call("who");
  EXPECT_TRUE(Run("[" + ask + "," + who + "]")["httpd_restart"].asBool());
  for (const bool last : {false, true}) {
    APIRunner runner;
    APIRequest request(Json::Value{});
    APIResponse response(&request);
    Json::Value params(Json::objectValue);
    params["postParam"]["compound"] =
        FromText("[" + (last ? who : ask) + "," + (last ? ask : who) + "]");
    request.InitParam(params, false);
    EXPECT_TRUE(runner.HandleCompound(&request, &response));
    EXPECT_EQ("asked", response.GetServerError());
    EXPECT_NE(last,
              static_cast<APIResponsePrivate::CallbackList*>(response.GetCallbackFuncs())->empty());
  }
}

TEST_F(Compound, NestsToADepthOfEight) {
  std::string list = "[]";
  for (int depth = 1; depth <= 9; ++depth) {
    Json::Value body = Run(list);
    for (int level = 1; level < depth; ++level) {
      body = body["data"]["result"][0];
    }
    EXPECT_EQ(depth <= 8 ? 0 : 110, body["error"]["code"].asInt()) << depth;
    std::string element = kEntry;
    element.back() = ',';
    list = "[" + element + "\"compound\":" + list + "}]";
  }
}

TEST_F(Compound, HoldsAThousandCallsInAll) {
  const auto list = [](int calls) {
    std::string text = "[";
    for (int call = 0; call < calls; ++call) {
      text += call == 0 ? "5" : ",5";
    }
    return text + "]";
  };
  EXPECT_TRUE(Run(list(1000))["success"].asBool());
  EXPECT_EQ(110, Run(list(1001))["error"]["code"].asInt());
  std::string inner = kEntry;
  inner.back() = ',';
  inner += "\"compound\":" + list(600) + "}";
  EXPECT_EQ("0 110 failed", Codes(Run("[" + inner + "," + inner + "]")));
}

TEST_F(Compound, TheEntryChecksEveryElementAsItsCaller) {
  Describe("1");
  directory_.Configure("administrators=boss\n");
  Session session;
  session.user = "member";
  std::string id;
  ASSERT_TRUE(CreateSession(session, id));
  const auto run = [](const std::string& credentials) {
    const std::string compound = "[" + Call("who") + "," + Call("admin") + "," + Call("who") + "]";
    return FromText(
        BodyOf(RunEntry({{"QUERY_STRING", "api=ORBO.Entry.Request&version=1&method=request&" +
                                              credentials + "compound=" + compound}})));
  };
  const Json::Value body = run("_sid=" + id + "&");
  EXPECT_EQ("0 105 0 failed", Codes(body));
  for (const int element : {0, 2}) {
    EXPECT_EQ("member", body["data"]["result"][element]["data"]["user"].asString());
  }
  // The facts of the one check reach what needs none, however deep it lies.
  std::string nested = kEntry;
  nested.back() = ',';
  nested += "\"compound\":[" + Call("who") + "," +
            R"({"api":"ORBO.Test.Open","version":1,"method":"who"})" + "]}";
  const std::string deep = BodyOf(
      RunEntry({{"QUERY_STRING", "api=ORBO.Entry.Request&version=1&method=request&_sid=" + id +
                                     "&compound=[" + nested + "]"}}));
  EXPECT_EQ("member",
            FromText(deep)["data"]["result"][0]["data"]["result"][1]["data"]["user"].asString())
      << deep;
  EXPECT_EQ("119 119 119 failed", Codes(run("")));
  EXPECT_EQ("119 119 119 failed", Codes(run("tid=t1.none.none&")));
  Describe("2");
  const Json::Value open = run("tid=t1.none.none&");
  EXPECT_EQ("0 121 0 failed", Codes(open));
  EXPECT_EQ("", open["data"]["result"][0]["data"]["user"].asString());
}

TEST_F(Compound, ExecLeavesTheProcessAsItWas) {
  const std::string before = Cwd();
  setenv("USERNAME", "shell", 1);
  setenv("ORBO_WEBAPI_USERNAME", "outer", 1);
  Json::Value result("old");
  APIRunner::Exec(result, "ORBO.Test.Caller", 1, "call", FromText(R"({"inner":"who","version":7})"),
                  "root");
  EXPECT_EQ("guest", result["data"]["data"]["user"].asString());
  EXPECT_EQ("ORBO.Test.Calle", result["data"]["task_name"].asString())
      << "the name of the call that goes on";
  EXPECT_EQ(before, Cwd());
  EXPECT_STREQ("outer", std::getenv("USERNAME"));
  EXPECT_STREQ("outer", std::getenv("ORBO_WEBAPI_USERNAME"));

  APIRunner::Exec(result, "ORBO.Test.Caller", 1, "call", FromText(R"({"inner":"no"})"), "root");
  EXPECT_EQ(103, result["data"]["error"]["code"].asInt());
  unsetenv("ORBO_WEBAPI_USERNAME");
  APIRunner::Exec(result, "ORBO.Test.Caller", 1, "who", Json::Value(), "root");
  EXPECT_TRUE(result["data"]["admin"].asBool());
  EXPECT_STREQ("root", std::getenv("USERNAME"));
  EXPECT_STREQ("root", std::getenv("ORBO_WEBAPI_USERNAME"));
  unsetenv("USERNAME");
  unsetenv("ORBO_WEBAPI_USERNAME");
}

TEST_F(Compound, ExecRefusesWhatItCannotCall) {
  Json::Value result(Json::arrayValue);
  APIRunner::Exec(result, "ORBO.Test.Caller", 1, nullptr, Json::Value(), "ada");
  EXPECT_EQ(FromText(R"({"success":false,"error":{"code":101}})"), result);
  APIRunner::Exec(result, "ORBO.Test.Caller", 1, "who", FromText("[1]"), "ada");
  EXPECT_EQ(101, result["error"]["code"].asInt());

  // Descriptions of the directory that the caller happens to work in do not count.
  const std::string root = std::getenv("WEBAPI_ROOT");
  setenv("WEBAPI_ROOT", "/nowhere", 1);
  APIRunner::Exec(result, "ORBO.Test.Caller", 1, "who", Json::Value(), "ada");
  setenv("WEBAPI_ROOT", root.c_str(), 1);
  EXPECT_EQ(102, result["error"]["code"].asInt());

  // A directory that has lost its name is still the one to go back to.
  const std::string lost = root + "/lost";
  std::filesystem::create_directory(lost);
  const std::string before = Cwd();
  ASSERT_EQ(0, chdir(lost.c_str()));
  std::filesystem::remove(lost);
  APIRunner::Exec(result, "ORBO.Test.Caller", 1, "who", Json::Value(), "ada");
  EXPECT_TRUE(result["success"].asBool());
  EXPECT_THROW(Cwd(), std::filesystem::filesystem_error);
  ASSERT_EQ(0, chdir(before.c_str()));
}

}  // namespace
}  // namespace ORBO
