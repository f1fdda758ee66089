#include <gtest/gtest.h>
#include <webapi/APIRequest.h>

#include "request/APIRequestPrivate.h"
#include "unit/json.h"

namespace ORBO {
namespace {

TEST(APIBase, MergesAndClearsKnownSectionsOnly) {
  APIRequestPrivate store(nullptr);
  for (const char* refused : {"[1]", "\"x\"", "{}"}) {
    EXPECT_FALSE(store.SetData("param", FromText(refused), false)) << refused;
  }
  EXPECT_FALSE(store.SetData("environ", "a", Json::Value(1), true) ||
               store.SetData("param", "", Json::Value(1), false) ||
               store.SetData("nowhere", "a", Json::Value("x"), false));
  EXPECT_FALSE(store.HasData("nowhere", "a") || store.ClearData("", "a"));
  EXPECT_EQ(FromText("{}"), store.GetData("param", "", Json::Value("default")));
  EXPECT_TRUE(store.SetData("param", FromText(R"({"a":1,"b":"2"})"), false));
  EXPECT_TRUE(store.SetData("param", FromText(R"({"b":3,"c":"4"})"), true));
  EXPECT_EQ(FromText(R"({"a":1,"b":"2","c":"4"})"), store.GetData("param", "", Json::Value()));
  EXPECT_TRUE(store.ClearData("param", "a"));
  EXPECT_FALSE(store.ClearData("param", "a"));
  EXPECT_TRUE(store.ClearData("param", ""));
  EXPECT_EQ(FromText("{}"), store.GetData("param", "", Json::Value("default")));
}

TEST(APIRequest, IsBuiltFromItsDescription) {
  APIRequest request(FromText(R"({
    "environ": {"A": "1", "B": 2, "HTTP_COOKIE": "id=abc%20d; flag; lang=e+n=1"},
    "getParam": {"a": "1", "api": "X", "version": "3"},
    "postParam": {"a": "2", "method": "m"},
    "reqLib": {"lib": "x.so"}})"));
  EXPECT_TRUE(request.HasEnv("A") && !request.HasEnv("B"));
  EXPECT_EQ("abc d,e+n=1,none", request.GetSessionID() + "," + request.GetCookie("lang", "") + "," +
                                    request.GetCookie("flag", "none"));
  EXPECT_EQ(FromText(R"({"a":"2","api":"X","version":"3","method":"m"})"),
            request.GetParam("", Json::Value()));
  EXPECT_EQ("X 3 m", request.GetAPIClass() + " " + std::to_string(request.GetAPIVersion()) + " " +
                         request.GetAPIMethod());
  EXPECT_EQ("x.so", request.GetAPIInfo("lib", Json::Value()).asString());
  const Json::Value fallback("x");
  EXPECT_EQ(&fallback, &request.GetParamRef("absent", fallback)) << "the caller's default itself";

  request.InitParam(FromText(R"({"postParam": {"d": 1}})"), false);
  EXPECT_TRUE(request.HasParam("a"));
  request.InitParam(FromText(R"({"postParam": {"e": 1}})"), true);
  EXPECT_FALSE(request.HasParam("a") || request.HasParam("d"));
}

TEST(APIRequest, SessionFactsOfAnotherTypeAreClosed) {
  APIRequest request{Json::Value()};
  EXPECT_TRUE(request.HasAppPriv(""));
  EXPECT_EQ("/tmp /tmp", request.GetPreferenceDir() + " " + request.GetGroupPreferenceDir(""));
  request.InitSession(FromText(R"({"uid":7,"isAuthorized":true,"appPriv":"P"})"));
  EXPECT_EQ(7U, request.GetLoginUID());
  request.InitSession(FromText(R"({"username":"alice","appPriv":["P"]})"));
  EXPECT_FALSE(request.HasAppPriv("P") || request.IsAuthorized());
  for (const char* uid : {"-1", "\"root\"", "4294967296", "18446744073709551615", "null", "0.5"}) {
    request.InitSession(FromText(std::string(R"({"uid":)") + uid + "}"));
    EXPECT_EQ(static_cast<uid_t>(-1), request.GetLoginUID()) << uid;
  }
}

TEST(APIRequest, AllowedUserMaskIsKeptInTheSession) {
  APIRequest request{Json::Value()};
  request.InitAPIInfo(FromText(R"({"allowUser":["admin.local","normal.ldap","guest",7]})"));
  EXPECT_EQ(0x21, request.GetAllowUser());
  request.InitAPIInfo(FromText(R"({"lib":"x"})"));
  EXPECT_EQ(0x21, request.GetAllowUser());
  EXPECT_EQ(Json::Value("gone"), request.GetAPIInfo("allowUser", "gone"));
  request.InitSession(FromText(R"({"allowUser":8})"));
  EXPECT_EQ(8, request.GetAllowUser());
}

TEST(APIRequest, TellsItsKindByItsEnvironment) {
  const std::tuple<const char*, int, bool, bool> rows[] = {
      {R"({"REQUEST_METHOD":"GET","CONTENT_TYPE":"x; multipart/form-data;"})", 1, true, false},
      {R"({"REQUEST_METHOD":"HEAD","CONTENT_TYPE":"Multipart/Form-Data"})", 3, false, false},
      {R"({"HTTP_X_TYPE_NAME":"SliceUpload","task_id":"1"})", 2, true, false},
      {R"({"HTTP_X_TYPE_NAME":"other","task_user":"alice"})", 2, false, false},
      {R"({"REQUEST_METHOD":"get","task_user":"alice","task_id":"1"})", 2, false, true},
  };
  for (const auto& [environment, method, is_upload, is_task] : rows) {
    SCOPED_TRACE(environment);
    APIRequest request(FromText(R"({"environ":{"REQUEST_METHOD":"POST"}})"));
    request.InitEnv(FromText(environment));
    EXPECT_EQ(method, request.GetRequestMethod());
    EXPECT_EQ(is_upload, request.IsUploadRequest());
    EXPECT_EQ(is_task, request.IsPollingTask());
  }
}

TEST(APIRequest, DerivesTheURL) {
  const std::tuple<const char*, const char*, const char*, int> rows[] = {
      {R"({"HTTPS":"on","SCRIPT_URI":"http://h/","HTTP_HOST":"[::1]"})", "https", "[::1]", 443},
      {R"({"HTTPS":"off","HTTP_X_FORWARDED_PROTO":"HTTPS","HTTP_HOST":"h"})", "https", "h", 443},
      {R"({"SCRIPT_URI":"http://h/","HTTP_HOST":"a:b:7"})", "http", "a:b", 7},
      {R"({"SCRIPT_URI":"http","HTTP_HOST":"h"})", "http", "h", 80},
      {R"({"SCRIPT_URI":"http:","HTTP_HOST":"[[a]]b:5001"})", "http", "[[a]]", 5001},
      {R"({"SCRIPT_URI":"ftp://h/","HTTP_HOST":"h"})", "ftp", "h", 0},
      {R"({"HTTPS":"ON","HTTP_HOST":"[fe80::1"})", "https", "none", -1},
      {R"({"SCRIPT_NAME":"/webapi/entry.cgi"})", "", "none", -1},
  };
  for (const auto& [environment, protocol, host, port] : rows) {
    SCOPED_TRACE(environment);
    APIRequest request{Json::Value()};
    request.InitEnv(FromText(environment));
    // The port first: it depends on the protocol, which nobody has asked for yet.
    EXPECT_EQ(port, request.GetURLPort(-1));
    EXPECT_EQ(protocol, request.GetURLProto("none"));
    EXPECT_EQ(host, request.GetURLHost("none"));
    EXPECT_EQ("/x/ y", request.GetURLPath("/x/") + " " + request.GetURLName("y"));
  }
}

}  // namespace
}  // namespace ORBO
