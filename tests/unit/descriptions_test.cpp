#include <gtest/gtest.h>
#include <webapi/APIRunner.h>

#include "runner/DescriptionCache.h"
#include "runner/description_candidates.h"
#include "unit/LogCapture.h"
#include "unit/WebAPIDirectory.h"
#include "unit/json.h"

namespace ORBO {
namespace {

using Names = std::vector<std::string>;

TEST(DescriptionCandidates, ArePrefixesFromTheSecondDotOn) {
  const struct {
    std::string api;
    Names expected;
  } rows[] = {
      {"ORBO.Core.Share.Info",
       {"ORBO.Core.lib", "ORBO.Core.Share.lib", "ORBO.Core.Share.Info.lib"}},
      {"ORBO", {"ORBO.lib"}},
      {"ORBO.Core", {"ORBO.Core.lib"}},
      {"a.b.c.d.e.f", {"a.b.lib", "a.b.c.lib", "a.b.c.d.lib", "a.b.c.d.e.lib"}},
      {"", {}},
      {"../etc/passwd", {}},
      {"ORBO.Core/../x", {}},
      {std::string("ORBO\0.x", 7), {}},
      {"..", {"..lib", "...lib"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.api);
    EXPECT_EQ(row.expected, DescriptionCandidates(row.api));
  }
}

TEST(CheckLibDescription, AcceptsOnlyUsableEntries) {
  const struct {
    const char* change;  // merged over a usable entry
    bool valid;
  } rows[] = {
      {"{}", true},
      {R"({"minVersion":3,"maxVersion":1})", true},
      {R"({"priority":10})", true},
      {R"({"priority":-10})", true},
      {R"({"priority":11})", false},
      {R"({"priority":-11})", false},
      {R"({"priority":"1"})", false},
      {R"({"priority":null})", false},
      {R"({"lib":""})", false},
      {R"({"lib":7})", false},
      {R"({"minVersion":1.0})", false},
      {R"({"maxVersion":"1"})", false},
      {R"({"maxVersion":18446744073709551615})", false},
      {R"({"methods":null})", false},
      {R"({"methods":[]})", false},
  };
  APIRunner runner;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.change);
    Json::Value entry = FromText(R"({"lib":"x","minVersion":1,"maxVersion":1,"methods":{}})");
    const Json::Value change = FromText(row.change);
    for (const std::string& name : change.getMemberNames()) {
      entry[name] = change[name];
    }
    EXPECT_EQ(row.valid, runner.CheckLibDescription(entry));
  }
  Json::Value list = FromText("[]");
  EXPECT_FALSE(runner.CheckLibDescription(list));
}

class Descriptions : public testing::Test {
 protected:
  void SetUp() override {
    directory_.Write("lib.def", R"({"authLevel":1,"allowUser":["admin.local"],"priority":2,
        "methods":{"allowDemo":true,"allowUpload":true}})");
    directory_.Write("ORBO.A.lib", R"(// The family of A.
      {"ORBO.A": {"lib":"a.so","minVersion":1,"maxVersion":3,"requestFormat":"","own":[1,2],
        "methods":{"1":["get",{"set":{"allowUpload":false,"level":7}},{"none":{}},
                        {"z":{"q":1},"b":{"q":2}},5,{"odd":5}],
                   "2":["first"],"2":["second"],"3":{}}},
       "ORBO.A.Bad": {"lib":"","minVersion":1,"maxVersion":1,"methods":{}},
       "ORBO.A.Twice": {"lib":"old.so","minVersion":1,"maxVersion":1,"methods":{}},
       "ORBO.A.Twice": {"lib":"new.so","minVersion":1,"maxVersion":1,"methods":{}},
       "ORBO.A.\u0045sc": {"lib":"esc.so","minVersion":1,"maxVersion":1,
                           "\u006dethods":{"\u0031":["g\u0065t"]}},
       "ORBO.A.B.C": {"lib":"never.so","minVersion":1,"maxVersion":1,"methods":{}}})");
    directory_.Write("ORBO.A.B.lib", R"({})");
    directory_.Write("ORBO.Broken.lib", R"({"ORBO.Broken": {"lib":"a.so",}})");
  }

  WebAPIDirectory directory_;
};

TEST_F(Descriptions, ABrokenFileIsLoggedAndOverlooked) {
  APIRunner runner;
  LogCapture log;
  Json::Value descs(Json::objectValue);
  EXPECT_FALSE(runner.InitLibDesc(descs, "ORBO.Broken"));
  EXPECT_TRUE(log.Has(" WebAPI description file ORBO.Broken.lib is not valid"));
  EXPECT_FALSE(runner.InitLibDesc(descs, "ORBO.Unknown"));
  EXPECT_TRUE(log.Has("APIRunner.cpp:"));
  EXPECT_TRUE(log.Has(" WebAPI ORBO.Unknown is not valid"));
  EXPECT_FALSE(runner.InitLibDesc(descs, ""));
  EXPECT_EQ(FromText("{}"), descs);
}

TEST_F(Descriptions, AFileIsLoadedWholeWithDefaults) {
  APIRunner runner;
  LogCapture log;
  Json::Value descs(Json::objectValue);
  ASSERT_TRUE(runner.InitLibDesc(descs, "ORBO.A"));
  EXPECT_TRUE(log.Has(" WebAPI description ORBO.A.Bad is not valid."));
  EXPECT_EQ(1U, log.lines().size());
  EXPECT_EQ(Names({"ORBO.A", "ORBO.A.B.C", "ORBO.A.Esc", "ORBO.A.Twice"}), descs.getMemberNames());
  EXPECT_EQ(1, descs["ORBO.A"]["authLevel"].asInt());
  EXPECT_EQ(2, descs["ORBO.A"]["priority"].asInt());
  EXPECT_EQ("", descs["ORBO.A"]["requestFormat"].asString());
  EXPECT_EQ("JSON", descs["ORBO.A.Twice"]["requestFormat"].asString());
  EXPECT_EQ("new.so", descs["ORBO.A.Twice"]["lib"].asString());
}

TEST_F(Descriptions, TheLongestExistingFileCounts) {
  APIRunner runner;
  APIRequest request(FromText(R"({"getParam":{"api":"ORBO.A.B.C","version":1,"method":"m"}})"));
  APIResponse response(&request);
  EXPECT_FALSE(runner.CheckRequestParam(&request, &response));
  EXPECT_EQ(102, response.GetError());
}

TEST_F(Descriptions, BulkLoadTakesWhatIsUsable) {
  APIRunner runner;
  Json::Value descs(Json::objectValue);
  EXPECT_TRUE(runner.InitLibDesc(descs));
  EXPECT_TRUE(descs.isMember("ORBO.A"));
  EXPECT_FALSE(descs.isMember("ORBO.Broken"));
  for (const char* file : {"ORBO.A.lib", "ORBO.A.B.lib", "ORBO.Broken.lib"}) {
    directory_.Remove(file);
  }
  EXPECT_FALSE(runner.InitLibDesc(descs));
}

TEST_F(Descriptions, CachedEntriesAreTheSameAsLoadedOnes) {
  Json::Value descs(Json::objectValue);
  ASSERT_TRUE(APIRunner().InitLibDesc(descs, "ORBO.A"));
  for (const char* api : {"ORBO.A", "ORBO.A.Twice", "ORBO.A.Esc"}) {
    SCOPED_TRACE(api);
    APIRunner runner;
    Json::Value description(Json::objectValue);
    description["getParam"]["api"] = api;
    APIRequest request(description);
    EXPECT_FALSE(runner.AddAPIInfo(&request));
    runner.GetMethod(api, 1, "any");
    EXPECT_TRUE(runner.AddAPIInfo(&request));
    EXPECT_EQ(descs[api], request.GetAPIInfo("", Json::Value()));
  }
}

TEST_F(Descriptions, MethodAttributesFollowTheListing) {
  const char* const kDefaults = R"({"allowDemo":true,"allowUpload":true})";
  const struct {
    int version;
    const char* method;
    const char* expected;
  } rows[] = {
      {1, "get", kDefaults},
      {1, "set", R"({"allowUpload":false,"level":7})"},
      {1, "none", "{}"},
      {1, "b", R"({"q":2})"},  // first in name order stands for the element
      {1, "z", kDefaults},
      {1, "odd", "5"},
      {1, "absent", kDefaults},
      {9, "get", kDefaults},
  };
  APIRunner runner;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.method);
    EXPECT_EQ(FromText(row.expected), runner.GetMethod("ORBO.A", row.version, row.method));
  }
  EXPECT_TRUE(runner.GetMethodAttr("ORBO.A", 1, "get", "allowUpload"));
  EXPECT_FALSE(runner.GetMethodAttr("ORBO.A", 1, "none", "allowUpload"));
  EXPECT_TRUE(runner.GetMethodAttr("ORBO.A", 1, "odd", "allowUpload"));
  EXPECT_FALSE(runner.GetMethodAttr(nullptr, "allowUpload"));
}

TEST_F(Descriptions, ASecondLookUpReadsNothing) {
  APIRunner runner;
  EXPECT_EQ(7, runner.GetMethod("ORBO.A", 1, "set")["level"].asInt());
  directory_.Remove("ORBO.A.lib");
  EXPECT_EQ(7, runner.GetMethod("ORBO.A", 1, "set")["level"].asInt());
  EXPECT_TRUE(runner.GetMethodAttr("ORBO.A", 1, "get", "allowDemo"));
}

TEST_F(Descriptions, RequestsAreCheckedInOrder) {
  const struct {
    const char* parameters;
    int error;
  } rows[] = {
      {R"({"api":"","version":1,"method":"get"})", 101},
      {R"({"api":"ORBO.A","version":0,"method":"get"})", 101},
      {R"({"api":"ORBO.A","version":-1,"method":"get"})", 101},
      {R"({"api":"ORBO.A","version":1,"method":""})", 101},
      {R"({"api":"ORBO.None","version":1,"method":"get"})", 102},
      {R"({"api":"ORBO.A.Missing","version":1,"method":"get"})", 102},
      {R"({"api":"ORBO.A.Bad","version":1,"method":"get"})", 102},
      {R"({"api":"ORBO.Broken","version":1,"method":"get"})", 102},
      {R"({"api":"ORBO.A","version":4,"method":"get"})", 104},
      {R"({"api":"ORBO.A","version":3,"method":"get"})", 103},
      {R"({"api":"ORBO.A","version":2,"method":"first"})", 103},
      {R"({"api":"ORBO.A","version":2,"method":"second"})", 0},
      {R"({"api":"ORBO.A","version":"1","method":"get"})", 0},
      {R"({"api":"ORBO.A","version":1,"method":"z"})", 0},
      {R"({"api":"ORBO.A","version":1,"method":"b"})", 0},
      {R"({"api":"ORBO.A.Esc","version":1,"method":"get"})", 0},
      {R"({"api":"ORBO.A","version":1,"method":"5"})", 103},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.parameters);
    APIRunner runner;
    Json::Value description(Json::objectValue);
    description["getParam"] = FromText(row.parameters);
    APIRequest request(description);
    APIResponse response(&request);
    EXPECT_EQ(row.error == 0, runner.CheckRequestParam(&request, &response));
    EXPECT_EQ(row.error, response.GetError());
  }
}

TEST_F(Descriptions, UploadsNeedTheirAttribute) {
  for (const auto& [method, error] : {std::pair("get", 0), std::pair("none", 115)}) {
    SCOPED_TRACE(method);
    APIRunner runner;
    APIRequest request(FromText(R"({"environ":{"CONTENT_TYPE":"multipart/form-data"},
                                    "getParam":{"api":"ORBO.A","version":1}})"));
    Json::Value params(Json::objectValue);
    params["getParam"]["method"] = method;
    request.InitParam(params, false);
    APIResponse response(&request);
    EXPECT_EQ(error == 0, runner.CheckRequestParam(&request, &response));
    EXPECT_EQ(error, response.GetError());
  }
}

}  // namespace
}  // namespace ORBO
