#include <gtest/gtest.h>
#include <webapi/APIRunner.h>

#include <filesystem>

#include "runner/DescriptionCache.h"
#include "runner/description_candidates.h"
#include "unit/LogCapture.h"
#include "unit/WebAPIDirectory.h"
#include "unit/json.h"

namespace ORBO {
namespace {

using Names = std::vector<std::string>;

TEST(DescriptionCandidates, ArePrefixesFromTheSecondDotOn) {
  const std::pair<const char*, Names> rows[] = {
      {"ORBO", {"ORBO.lib"}},
      {"ORBO.Core", {"ORBO.Core.lib"}},
      {"a.b.c.d.e.f", {"a.b.lib", "a.b.c.lib", "a.b.c.d.lib", "a.b.c.d.e.lib"}},
      {"", {}},
      {"../etc/passwd", {}},
      {"ORBO.Core/../x", {}},
      {"..", {"..lib", "...lib"}},
  };
  for (const auto& [api, expected] : rows) {
    EXPECT_EQ(expected, DescriptionCandidates(api)) << api;
  }
  EXPECT_EQ(Names(), DescriptionCandidates(std::string("ORBO\0.x", 7)));
}

TEST(CheckLibDescription, AcceptsOnlyUsableEntriesAsValueAndAsText) {
  const std::pair<const char*, bool> rows[] = {
      // Each is merged over a usable entry.
      {R"({"minVersion":3,"maxVersion":1})", true},
      {R"({"priority":-10})", true},
      {R"({"priority":11})", false},
      {R"({"priority":"1"})", false},
      {R"({"lib":""})", false},
      {R"({"lib":7})", false},
      {R"({"minVersion":1.0})", false},
      {R"({"maxVersion":18446744073709551615})", false},
      {R"({"methods":[]})", false},
  };
  APIRunner runner;
  const WebAPIDirectory directory;
  for (const auto& [text, valid] : rows) {
    Json::Value entry = FromText(R"({"lib":"x","minVersion":1,"maxVersion":1,"methods":{}})");
    const Json::Value change = FromText(text);
    for (const std::string& name : change.getMemberNames()) {
      entry[name] = change[name];
    }
    EXPECT_EQ(valid, runner.CheckLibDescription(entry)) << text;
    Json::Value loaded(Json::objectValue);
    directory.Write("T.lib", R"({"T":)" + JSON::ToText(entry) + "}");
    EXPECT_TRUE(runner.InitLibDesc(loaded, "T"));
    EXPECT_EQ(valid, loaded.isMember("T")) << text;
  }
}

class Descriptions : public testing::Test {
 protected:
  void SetUp() override {
    directory_.Write("lib.def", R"({"authLevel":1,"allowUser":["admin.local"],"priority":2,
        "methods":{"allowDemo":true,"allowUpload":true}})");
    directory_.Write("ORBO.A.lib", R"(// The family of A.
      {"ORBO.A": {"lib":"a.so","minVersion":1,"maxVersion":3,"requestFormat":"","own":[1,2],
        "methods":{"1":["get",{"set":{"allowUpload":false,"level":7}},{"none":{}},
                        {"z":{"q":1},"b":{"q":2}},5,{"odd":5},
                        {"null":null}],
                   "2":["first"],"2":["second"],"3":{}}},
       "ORBO.A.Bad": {"lib":"","minVersion":1,"maxVersion":1,"methods":{}},
       "ORBO.A.Twice": {"lib":"old.so","minVersion":1,"maxVersion":1,"methods":{}},
       "ORBO.A.Twice": {"lib":"new.so","minVersion":1,"maxVersion":1,"methods":{}},
       "ORBO.A.\u0045sc": {"lib":"esc.so","minVersion":1,"maxVersion":1,
                           "\u006dethods":{"\u0031":["g\u0065t"]}},
       "ORBO.A.High": {"lib":"a.so","minVersion":2,"maxVersion":4294967297,
                       "methods":{"1":["get"],"2":["get"]}},
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
  EXPECT_EQ(Names({"ORBO.A", "ORBO.A.B.C", "ORBO.A.Esc", "ORBO.A.High", "ORBO.A.Twice"}),
            descs.getMemberNames());
  EXPECT_EQ(1, descs["ORBO.A"]["authLevel"].asInt());
  EXPECT_EQ("", descs["ORBO.A"]["requestFormat"].asString());
  EXPECT_EQ("JSON", descs["ORBO.A.Twice"]["requestFormat"].asString());
  EXPECT_EQ("new.so", descs["ORBO.A.Twice"]["lib"].asString());
  descs = Json::Value(Json::objectValue);
  EXPECT_TRUE(runner.InitLibDesc(descs)) << "every file";
  EXPECT_TRUE(descs.isMember("ORBO.A") && !descs.isMember("ORBO.Broken"));
}

TEST_F(Descriptions, ALaterFileReplacesAnEntryWhole) {
  directory_.Write("ORBO.L.lib", R"({"ORBO.L":{"lib":"l","minVersion":1,"maxVersion":1,
      "methods":{}},"ORBO.L.B":{"lib":"new","minVersion":2,"maxVersion":2,"methods":{"2":["m"]}}})");
  directory_.Write("ORBO.L.B.lib", R"({"ORBO.L.B":{"lib":"old","minVersion":1,"maxVersion":1,
      "methods":{"1":["m"]}}})");
  APIRequest request(FromText(R"({"getParam":{"api":"ORBO.L.B"}})"));
  {
    APIRunner runner;
    runner.GetMethod("ORBO.L.B", 1, "m");
    EXPECT_TRUE(runner.AddAPIInfo(&request));
    runner.GetMethod("ORBO.L", 1, "m");
    EXPECT_TRUE(runner.AddAPIInfo(&request));
  }
  // The request may outlive the runner whose file it points into.
  EXPECT_EQ("new", request.GetAPIInfo("lib", "").asString());
  EXPECT_EQ(FromText(R"({"2":["m"]})"), request.GetAPIInfo("methods", Json::Value()));
}

TEST_F(Descriptions, MethodAttributesFollowTheListing) {
  const char* const kDefaults = R"({"allowDemo":true,"allowUpload":true})";
  const std::pair<const char*, const char*> rows[] = {
      {"get", kDefaults},    {"set", R"({"allowUpload":false,"level":7})"},
      {"none", "{}"},        {"b", R"({"q":2})"},  // first in name order stands for the element
      {"z", kDefaults},      {"odd", "5"},
      {"absent", kDefaults}, {"null", "null"},
  };
  APIRunner runner;
  for (const auto& [method, expected] : rows) {
    EXPECT_EQ(FromText(expected), runner.GetMethod("ORBO.A", 1, method)) << method;
  }
  EXPECT_TRUE(runner.GetMethodAttr("ORBO.A", 1, "get", "allowUpload"));
  EXPECT_FALSE(runner.GetMethodAttr("ORBO.A", 1, "none", "allowUpload"));
  EXPECT_TRUE(runner.GetMethodAttr("ORBO.A", 1, "odd", "allowUpload"));
  EXPECT_FALSE(runner.GetMethodAttr("ORBO.A", 1, "null", "allowUpload"));
  // What is no number there is grants nothing.
  directory_.Write("ORBO.Far.lib", R"({"ORBO.Far":{"lib":"f","minVersion":1,"maxVersion":1,
      "methods":{"1":[{"m":{"x":1e999}}]}}})");
  EXPECT_EQ(FromText("{}"), runner.GetMethod("ORBO.Far", 1, "m"));
  DescriptionDefaults defaults;
  Json::Value value(1);
  EXPECT_TRUE(DescriptionCache(defaults).FindMethodAttribute("ORBO.Far", 1, "m", "x", value));
  EXPECT_EQ(Json::Value(), value);
  ASSERT_TRUE(std::filesystem::remove("ORBO.A.lib"));
  EXPECT_EQ(7, runner.GetMethod("ORBO.A", 1, "set")["level"].asInt()) << "from memory";
}

TEST_F(Descriptions, RequestsAreCheckedInOrder) {
  const std::tuple<const char*, const char*, const char*, int> rows[] = {
      {"", "1", "get", 101},           {"ORBO.A", "0", "get", 101},
      {"ORBO.A", "1", "", 101},        {"ORBO.A.Missing", "1", "get", 102},
      {"ORBO.A.B.C", "1", "m", 102},  // the longest name of an existing file counts
      {"ORBO.A.Bad", "1", "get", 102}, {"ORBO.Broken", "1", "get", 102},
      {"ORBO.A", "4", "get", 104},     {"ORBO.A", "3", "get", 103},
      {"ORBO.A", "2", "first", 103},   {"ORBO.A", "2", "second", 0},
      {"ORBO.A", "1", "b", 0},         {"ORBO.A.Esc", "1", "get", 0},
      {"ORBO.A", "1", "5", 103},       {"ORBO.A.High", "1", "get", 104},
      {"ORBO.A.High", "2", "get", 0},
  };
  for (const auto& [api, version, method, error] : rows) {
    SCOPED_TRACE(std::string(api) + " " + version + " " + method);
    Json::Value description(Json::objectValue);
    description["getParam"]["api"] = api;
    description["getParam"]["version"] = version;
    description["getParam"]["method"] = method;
    APIRequest request(description);
    APIResponse response(&request);
    EXPECT_EQ(error == 0, APIRunner().CheckRequestParam(&request, &response));
    EXPECT_EQ(error, response.GetError());
  }
}

}  // namespace
}  // namespace ORBO
