#include <gtest/gtest.h>
#include <webapi/APIRequest.h>

#include <cstdio>
#include <cstring>

#include "platform/cipher.h"
#include "request/APIRequestPrivate.h"
#include "request/encrypted_params.h"
#include "unit/json.h"

// These stand for the platform's ciphers: "sealed:" or a key and ":" before a
// text seal it.

int OrboCgiDecryptParam(char* text) {
  if (std::strncmp(text, "sealed:", 7) != 0) {
    return 0;
  }
  std::memmove(text, text + 7, std::strlen(text) - 6);
  return 1;
}

int ORBOKptokenGenerateToken(const char* token, char* key_buffer, int size) {
  return std::snprintf(key_buffer, static_cast<std::size_t>(size), "%s", token) < size ? 0 : -1;
}

bool ORBO::CredRequestUtil::GetDecryptAESString(const std::string& key,
                                                const std::string& cipher_text,
                                                std::string& plain_text) {
  const bool sealed = cipher_text.rfind(key + ":", 0) == 0;
  plain_text = sealed ? cipher_text.substr(key.size() + 1) : "";
  return sealed;
}

namespace ORBO {
namespace {

TEST(APIBase, MergesAndClearsKnownSectionsOnly) {
  APIRequestPrivate store(nullptr);
  EXPECT_FALSE(store.SetData("param", FromText("[1]"), false));
  EXPECT_FALSE(store.SetData("environ", "a", Json::Value(1), true));
  EXPECT_FALSE(store.SetData("nowhere", "a", Json::Value("x"), false));
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
    "environ": {"A": "1", "B": 2, "REQUEST_METHOD": "POST", "HTTP_COOKIE": "id=abc%20d; lang=en"},
    "getParam": {"a": "1", "api": "X", "version": "3", "__cIpHeRtExT": "sealed:b=4"},
    "postParam": {"a": "2", "method": "m", "__nEkOtReHpIc": "k", "__tXeTrEhPiC": "k:c=5"},
    "reqLib": {"lib": "x.so"}})"));
  EXPECT_TRUE(request.HasEnv("A"));
  EXPECT_FALSE(request.HasEnv("B"));
  EXPECT_EQ(APIRequest::METHOD_POST, request.GetRequestMethod());
  EXPECT_EQ("abc d", request.GetSessionID());
  EXPECT_EQ("en", request.GetCookie("lang", ""));
  EXPECT_EQ(FromText(R"({"a":"2","b":4,"c":5,"api":"X","version":"3","method":"m"})"),
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
  request.InitSession(FromText(R"({"uid":7,"isAuthorized":true,"appPriv":"P"})"));
  EXPECT_EQ(7U, request.GetLoginUID());
  request.InitSession(FromText(R"({"username":"alice","appPriv":["P"]})"));
  EXPECT_FALSE(request.HasAppPriv("P") || request.IsAuthorized());
  for (const char* uid : {"-1", "\"root\"", "4294967296", "18446744073709551615", "null", "0.5"}) {
    request.InitSession(FromText(std::string(R"({"uid":)") + uid + "}"));
    EXPECT_EQ(static_cast<uid_t>(-1), request.GetLoginUID()) << uid;
  }
}

TEST(APIRequest, BackgroundTasksNeedBothNames) {
  APIRequest request{Json::Value()};
  request.InitEnv(FromText(R"({"task_id":"1"})"));
  EXPECT_FALSE(request.IsPollingTask());
  request.InitEnv(FromText(R"({"task_user":"alice","full_task_id":"alice/1"})"));
  EXPECT_TRUE(request.IsPollingTask());
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
  const std::pair<const char*, bool> rows[] = {
      {R"({"CONTENT_TYPE":"multipart/form-data; boundary=x"})", true},
      {R"({"CONTENT_TYPE":"Multipart/Form-Data"})", false},
      {R"({"CONTENT_TYPE":"Multipart/Form-Data","HTTP_X_TYPE_NAME":"sliceupload"})", true},
      {R"({"HTTP_X_TYPE_NAME":"SliceUpload"})", true},
      {R"({"HTTP_X_TYPE_NAME":"other"})", false},
  };
  for (const auto& [environment, upload] : rows) {
    APIRequest request{Json::Value()};
    request.InitEnv(FromText(environment));
    EXPECT_EQ(upload, request.IsUploadRequest()) << environment;
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
      {R"({"SCRIPT_URI":"http","HTTP_HOST":"a:b:7"})", "http", "a:b", 7},
      {R"({"SCRIPT_URI":"http:","HTTP_HOST":"[fe80::1]:5001"})", "http", "[fe80::1]", 5001},
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
  }
}

TEST(EncryptedParams, ReservedMembersGoAndFailureShows) {
  const struct {
    const char* before;
    bool result;
    const char* after;
  } rows[] = {
      {R"({"__nEkOtReHpIc":"","__tXeTrEhPiC":"x","a":1})", false, R"({"a":1})"},
      {R"({"webapi":{"__cIpHeRtExT":"no","b":2},"a":1})", false, R"({"webapi":{"b":2},"a":1})"},
      {R"({"__cIpHeRtExT":"sealed:a=2&b=x","a":"1"})", true, R"({"a":2,"b":"x"})"},
      {R"({"__nEkOtReHpIc":"k","__tXeTrEhPiC":"other:a=2","a":1})", false, R"({"a":1})"},
      {R"({"__nEkOtReHpIc":"a key that is longer than the buffer for it","__tXeTrEhPiC":"x"})",
       false, "{}"},
      {R"({"__cIpHeRtExT":"sealed:__nEkOtReHpIc=k&__tXeTrEhPiC=k:a=2"})", true, R"({"a":2})"},
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
