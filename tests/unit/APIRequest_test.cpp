#include <gtest/gtest.h>
#include <webapi/APIRequest.h>

#include <cstdlib>

#include "request/APIRequestPrivate.h"
#include "request/cookie_line.h"
#include "request/encrypted_params.h"
#include "request/host_port.h"
#include "unit/json.h"

namespace ORBO {
namespace {

TEST(APIBase, RefusesUnknownSectionsEmptyKeysAndWrongTypes) {
  APIRequestPrivate store(nullptr);
  EXPECT_FALSE(store.SetData("param", Json::Value("x"), false));
  EXPECT_FALSE(store.SetData("param", Json::Value(Json::objectValue), false));
  EXPECT_FALSE(store.SetData("param", FromText("[1]"), false));
  EXPECT_FALSE(store.SetData("param", "", Json::Value("x"), false));
  EXPECT_FALSE(store.SetData("environ", "a", Json::Value(1), true));
  EXPECT_FALSE(store.SetData("nowhere", "a", Json::Value("x"), false));
  EXPECT_FALSE(store.SetData("nowhere", FromText(R"({"a":1})"), false));
  EXPECT_FALSE(store.ClearData("", "a"));
  EXPECT_FALSE(store.HasData("nowhere", "a"));
  EXPECT_EQ(FromText("{}"), store.GetData("param", "", Json::Value("default")));
}

TEST(APIBase, MergesAndClears) {
  APIRequestPrivate store(nullptr);
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
    "environ": {"A": "1", "B": 2, "REQUEST_METHOD": "POST", "HTTP_COOKIE": "id=abc%20d; lang=en"},
    "getParam": {"a": "1", "api": "X", "version": "3"},
    "postParam": {"a": "2", "method": "m"},
    "reqLib": {"lib": "x.so"},
    "session": {"username": "alice"}})"));
  EXPECT_TRUE(request.HasEnv("A"));
  EXPECT_FALSE(request.HasEnv("B"));
  EXPECT_EQ(APIRequest::METHOD_POST, request.GetRequestMethod());
  EXPECT_EQ("abc d", request.GetSessionID());
  EXPECT_EQ("en", request.GetCookie("lang", ""));
  EXPECT_EQ("2", request.GetParam("a", Json::Value()).asString());
  EXPECT_EQ("X", request.GetAPIClass());
  EXPECT_EQ(3, request.GetAPIVersion());
  EXPECT_EQ("m", request.GetAPIMethod());
  EXPECT_EQ("x.so", request.GetAPIInfo("lib", Json::Value()).asString());
  EXPECT_EQ("alice", request.GetLoginUserName());

  request.InitParam(FromText(R"({"postParam": {"b": 1}})"), false);
  EXPECT_TRUE(request.HasParam("a"));
  request.InitParam(FromText(R"({"postParam": {"c": 1}})"), true);
  EXPECT_FALSE(request.HasParam("a") || request.HasParam("b"));
}

TEST(APIRequest, OpensEncipheredParametersBeforeItTakesThem) {
  APIRequest request(FromText(R"({
    "getParam": {"__cIpHeRtExT": "sealed:api=X&version=2&a=1"},
    "postParam": {"__nEkOtReHpIc": "k", "__tXeTrEhPiC": "k:a=3"}})"));
  EXPECT_EQ("X", request.GetAPIClass());
  EXPECT_EQ(2, request.GetAPIVersion());
  EXPECT_EQ(3, request.GetParam("a", Json::Value()).asInt());
  EXPECT_FALSE(request.HasParam("__cIpHeRtExT") || request.HasParam("__tXeTrEhPiC"));
}

TEST(APIRequest, GivesTheCallersDefaultItself) {
  APIRequest request{Json::Value()};
  const Json::Value fallback("x");
  EXPECT_EQ(&fallback, &request.GetParamRef("absent", fallback));
}

TEST(APIRequest, HostileNamesNeverThrow) {
  for (const char* text :
       {R"({"api":null,"version":null,"method":null})", R"({"api":[1],"version":{},"method":1.5})",
        R"({"api":"X","version":4294967297,"method":true})",
        R"({"api":"X","version":"9223372036854775808","method":"m"})",
        R"({"api":"X","version":"1x","method":"m"})"}) {
    SCOPED_TRACE(text);
    Json::Value description(Json::objectValue);
    description["getParam"] = FromText(text);
    APIRequest request(description);
    EXPECT_EQ(0, request.GetAPIVersion());
  }
}

TEST(APIRequest, SessionFactsDefaultToTheClosedSide) {
  APIRequest request{Json::Value()};
  EXPECT_TRUE(request.IsTimeout());
  EXPECT_TRUE(request.IsSkipCheckIP());
  EXPECT_FALSE(request.IsAuthorized());
  EXPECT_FALSE(request.IsAdmin());
  EXPECT_EQ("enu", request.GetUILanguage());
  EXPECT_EQ(static_cast<uid_t>(-1), request.GetLoginUID());
  EXPECT_TRUE(request.HasAppPriv(""));
  EXPECT_FALSE(request.HasAppPriv("X"));
}

TEST(APIRequest, SessionFactsAreReadUnderTheirKeys) {
  APIRequest request{Json::Value()};
  request.InitSession(FromText(R"({"old":1})"));
  request.InitSession(FromText(R"({"username":"alice","uid":7,"isAdmin":true,
      "isSkipCheckIP":false,"isTimeout":false,"timeout":15,"isAuthorized":true,"app":"A",
      "webapi":"W","appPriv":"P","sessFile":"/s","uiLang":"ger"})"));
  EXPECT_EQ(7U, request.GetLoginUID());
  EXPECT_TRUE(request.IsAdmin() && request.IsAuthorized());
  EXPECT_FALSE(request.IsSkipCheckIP() || request.IsTimeout());
  EXPECT_EQ(15, request.GetTimeoutDuration());
  EXPECT_EQ("A W /s ger", request.GetApplication() + " " + request.GetWebAPIPriv() + " " +
                              request.GetSessionFilePath() + " " + request.GetUILanguage());
  EXPECT_TRUE(request.HasAppPriv("P"));
  EXPECT_FALSE(request.HasAppPriv(""));
  request.InitSession(FromText(R"({"username":"alice","appPriv":["P"]})"));
  EXPECT_FALSE(request.HasAppPriv("P") || request.IsAuthorized());
}

TEST(APIRequest, BackgroundTasksNeedBothNames) {
  APIRequest request{Json::Value()};
  request.InitEnv(FromText(R"({"task_id":"1"})"));
  EXPECT_FALSE(request.IsPollingTask());
  request.InitEnv(FromText(R"({"task_user":"alice","full_task_id":"alice/1"})"));
  EXPECT_TRUE(request.IsPollingTask());
  EXPECT_EQ("alice/1", request.GetPollingTaskId());
}

TEST(APIRequest, UnusableUserIdIsNobody) {
  for (const char* uid : {"-1", "\"root\"", "4294967296", "18446744073709551615", "null", "0.5"}) {
    SCOPED_TRACE(uid);
    APIRequest request{Json::Value()};
    request.InitSession(FromText(std::string(R"({"uid":)") + uid + "}"));
    EXPECT_EQ(static_cast<uid_t>(-1), request.GetLoginUID());
  }
}

TEST(APIRequest, AllowedUserMaskIsKeptInTheSession) {
  APIRequest request{Json::Value()};
  request.InitAPIInfo(FromText(R"({"allowUser":["admin.local","normal.ldap","guest",7]})"));
  EXPECT_EQ(0x21, request.GetAllowUser());
  request.InitAPIInfo(FromText(R"({"allowUser":["admin.domain"]})"));
  EXPECT_EQ(0x21, request.GetAllowUser());
  request.InitSession(FromText(R"({"allowUser":8})"));
  EXPECT_EQ(8, request.GetAllowUser());
}

TEST(APIRequest, RecognisesUploads) {
  const struct {
    const char* environment;
    bool upload;
  } rows[] = {
      {R"({"CONTENT_TYPE":"multipart/form-data; boundary=x"})", true},
      {R"({"CONTENT_TYPE":"Multipart/Form-Data"})", false},
      {R"({"CONTENT_TYPE":"Multipart/Form-Data","HTTP_X_TYPE_NAME":"sliceupload"})", true},
      {R"({"HTTP_X_TYPE_NAME":"SliceUpload"})", true},
      {R"({"HTTP_X_TYPE_NAME":"other"})", false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.environment);
    APIRequest request{Json::Value()};
    request.InitEnv(FromText(row.environment));
    EXPECT_EQ(row.upload, request.IsUploadRequest());
  }
}

TEST(APIRequest, DerivesTheURL) {
  const struct {
    const char* environment;
    const char* protocol;
    const char* host;
    int port;
  } rows[] = {
      {R"({"HTTPS":"on","SCRIPT_URI":"http://h/","HTTP_HOST":"h"})", "https", "h", 443},
      {R"({"HTTPS":"off","HTTP_X_FORWARDED_PROTO":"HTTPS","HTTP_HOST":"h"})", "https", "h", 443},
      {R"({"SCRIPT_URI":"http://h/","HTTP_HOST":"example:8080"})", "http", "example", 8080},
      {R"({"SCRIPT_URI":"ftp://h/","HTTP_HOST":"example"})", "ftp", "example", 0},
      {R"({"SCRIPT_URI":"http","HTTP_HOST":"a:b:7"})", "http", "a:b", 7},
      {R"({"SCRIPT_URI":"http:","HTTP_HOST":"[fe80::1]:5001"})", "http", "[fe80::1]", 5001},
      {R"({"HTTPS":"ON","HTTP_HOST":"[fe80::1]"})", "https", "[fe80::1]", 443},
      {R"({"HTTPS":"ON","HTTP_HOST":"[fe80::1"})", "https", "none", -1},
      {R"({})", "", "none", -1},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.environment);
    APIRequest request{Json::Value()};
    request.InitEnv(FromText(row.environment));
    // The port first: it depends on the protocol, which nobody has asked for yet.
    EXPECT_EQ(row.port, request.GetURLPort(-1));
    EXPECT_EQ(row.protocol, request.GetURLProto("none"));
    EXPECT_EQ(row.host, request.GetURLHost("none"));
    EXPECT_EQ("/x/", request.GetURLPath("/x/"));
  }
}

TEST(APIRequest, DeferredMethodsAppearWhenAskedFor) {
  APIRequestPrivate request(nullptr);
  request.InitAPIInfo(FromText(R"({"lib":"x"})"));
  request.SetDeferredMethods(R"({"1":["get"]})");
  EXPECT_TRUE(request.HasData("reqLib", "methods"));
  EXPECT_EQ(FromText(R"({"lib":"x","methods":{"1":["get"]}})"),
            request.GetData("reqLib", "", Json::Value()));
  request.SetDeferredMethods(R"({"1":["get"]})");
  request.InitAPIInfo(FromText(R"({"lib":"y"})"));
  EXPECT_FALSE(request.HasData("reqLib", "methods"));
}

TEST(EncryptedParams, ReservedMembersGoAndFailureShows) {
  const struct {
    const char* before;
    bool result;
    const char* after;
  } rows[] = {
      {R"({"a":"1"})", true, R"({"a":"1"})"},
      {R"({"__nEkOtReHpIc":"t"})", true, R"({"__nEkOtReHpIc":"t"})"},
      {R"({"__nEkOtReHpIc":"","__tXeTrEhPiC":"x","a":1})", false, R"({"a":1})"},
      {R"({"__cIpHeRtExT":"garbage","a":1})", false, R"({"a":1})"},
      {R"({"webapi":{"__cIpHeRtExT":"garbage","b":2},"a":1})", false,
       R"({"webapi":{"b":2},"a":1})"},
      {R"({"webapi":"text"})", true, R"({"webapi":"text"})"},
      {R"({"__cIpHeRtExT":"sealed:a=2&b=x","a":"1"})", true, R"({"a":2,"b":"x"})"},
      {R"({"__nEkOtReHpIc":"k","__tXeTrEhPiC":"k:a=2","a":1})", true, R"({"a":2})"},
      {R"({"__nEkOtReHpIc":"k","__tXeTrEhPiC":"other:a=2","a":1})", false, R"({"a":1})"},
      {R"({"__nEkOtReHpIc":"a key that is longer than the buffer for it","__tXeTrEhPiC":"x"})",
       false, "{}"},
      {R"({"__cIpHeRtExT":"sealed:__nEkOtReHpIc=k&__tXeTrEhPiC=k:a=2"})", true, R"({"a":2})"},
      {R"({"webapi":{"__cIpHeRtExT":"sealed:b=2"},"a":1})", true, R"({"webapi":{"b":2},"a":1})"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.before);
    Json::Value params = FromText(row.before);
    EXPECT_EQ(row.result, DecryptParam(params));
    EXPECT_EQ(FromText(row.after), params);
  }
}

}  // namespace
}  // namespace ORBO
