#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <webapi/APIAuth.h>
#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>

#include "entry/permission_codes.h"
#include "platform/linux/session_store.h"
#include "platform/linux/token_store.h"
#include "unit/LogCapture.h"
#include "unit/WebAPIDirectory.h"
#include "unit/entry_run.h"
#include "unit/json.h"

namespace ORBO {
namespace {

TEST(PermissionCodes, OnlyOneAndTwoPass) {
  const struct {
    int result;
    int error;
  } rows[] = {{-6, 105}, {-5, 119}, {-4, 105}, {-3, 105}, {-2, 105},
              {-1, 106}, {0, 105},  {1, 0},    {2, 0},    {3, 105}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.result);
    EXPECT_EQ(row.error, PermissionError(row.result));
  }
}

// Calls of described methods by users with real sessions and tokens.
class Permission : public testing::Test {
 protected:
  void SetUp() override {
    const std::filesystem::path root = std::getenv("WEBAPI_ROOT");
    std::filesystem::create_directories(root / "etc/orbo");
    std::ofstream(root / "etc/orbo/platform.conf")
        << "administrators=boss DOM\\boss boss@ldap\nsession_timeout=10\n";
    directory_.Write("lib.def", R"({"authLevel":1,"methods":{}})");
    Describe(R"("allowUser":["admin.local","normal.local"])");
  }

  // Describes the API with `members` added; "methods" list echo and a method for
  // administrators only.
  void Describe(const std::string& members) {
    directory_.Write("ORBO.Test.lib", R"({"ORBO.Test.Good":{"lib":")" + TestModule("good") +
                                          R"(","minVersion":1,"maxVersion":1,)" + members +
                                          R"(,"methods":{"1":["echo",
        {"checked":{"allowUser":["admin.local"]}},{"silent":{"allowTimeout":true}}]}}})");
  }

  static std::string Open(const std::string& user, const std::string& address = "") {
    Session session;
    session.user = user;
    session.address = address;
    std::string id;
    EXPECT_TRUE(CreateSession(session, id));
    return id;
  }

  static std::string Call(const std::string& id, const std::string& method = "echo",
                          const std::string& more = "") {
    return RunEntry(
        {{"QUERY_STRING", "api=ORBO.Test.Good&version=1&method=" + method + "&_sid=" + id + more},
         {"REMOTE_ADDR", "192.0.2.7"}});
  }

  static std::string CallByToken(const std::string& token, const std::string& method = "echo") {
    return RunEntry(
        {{"QUERY_STRING", "api=ORBO.Test.Good&version=1&method=" + method + "&tid=" + token}});
  }

  static int ErrorOf(const std::string& output) {
    return FromText(BodyOf(output))["error"]["code"].asInt();
  }

  // The value of the header that carries the server-error word; "" for none.
  static std::string WordOf(const std::string& output) {
    constexpr char kHeader[] = "x-request-error: ";
    const std::size_t begin = output.find(kHeader);
    if (begin == std::string::npos) {
      return "";
    }
    const std::size_t value = begin + sizeof kHeader - 1;
    return output.substr(value, output.find('\r', value) - value);
  }

  static void Age(const std::string& id, int seconds) {
    const std::string path = std::string(std::getenv("WEBAPI_ROOT")) + "/run/orbo/sessions/" + id;
    const timespec past{time(nullptr) - seconds, 0};
    const timespec times[2] = {past, past};
    EXPECT_EQ(0, utimensat(AT_FDCWD, path.c_str(), times, 0));
  }

  static std::int64_t LastActive(const std::string& id) {
    Session session;
    ReadSession(id, session);
    return session.last_active;
  }

  WebAPIDirectory directory_;
  LogCapture log_;
};

TEST_F(Permission, EveryUserClassAtApiLevel) {
  const struct {
    const char* user;
    const char* user_class;
  } rows[] = {{"boss", "admin.local"},
              {"DOM\\\\boss", "admin.domain"},
              {"boss@ldap", "admin.ldap"},
              {"member", "normal.local"},
              {"DOM\\\\member", "normal.domain"},
              {"member@ldap", "normal.ldap"},
              {"D\\\\x@y", "normal.domain"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.user);
    const std::string id = Open(FromText(std::string("\"") + row.user + "\"").asString());
    Describe(std::string(R"("allowUser":[")") + row.user_class + "\"]");
    EXPECT_EQ(0, ErrorOf(Call(id)));
    Describe(R"("allowUser":["other"])");
    const std::string refused = Call(id);
    EXPECT_EQ(105, ErrorOf(refused));
    EXPECT_EQ("", WordOf(refused));
  }
}

TEST_F(Permission, AMethodsOwnListReplacesTheApis) {
  EXPECT_EQ(105, ErrorOf(Call(Open("member"), "checked")));
  EXPECT_EQ(0, ErrorOf(Call(Open("boss"), "checked")));
}

TEST_F(Permission, WhatNamesNobodyIsOpenToNobody) {
  for (const char* list : {"null", "[]", "{}", "\"admin.local\"", "[null,7]"}) {
    SCOPED_TRACE(list);
    Describe(std::string("\"allowUser\":") + list);
    EXPECT_EQ(105, ErrorOf(Call(Open("boss"))));
  }
  Describe(R"("allowUser":["admin.local"],"appPriv":"ORBO.None")");
  EXPECT_EQ(105, ErrorOf(Call(Open("boss"))));
}

TEST_F(Permission, RefusalsCarryTheirWord) {
  const std::string nobody =
      RunEntry({{"QUERY_STRING", "api=ORBO.Test.Good&version=1&method=echo"}});
  EXPECT_EQ(119, ErrorOf(nobody));
  EXPECT_EQ("unauth", WordOf(nobody));

  const std::string unknown = Call("A" + std::string(43, 'x'));
  EXPECT_EQ(105, ErrorOf(unknown));
  EXPECT_EQ("noprivilege", WordOf(unknown));

  const std::string id = Open("boss");
  Age(id, 11 * 60);
  for (const char* method : {"echo", "silent"}) {  // "allowTimeout" admits nobody
    const std::string late = Call(id, method);
    EXPECT_EQ(106, ErrorOf(late));
    EXPECT_EQ("timeout", WordOf(late));
  }

  const std::string elsewhere = Call(Open("boss", "192.0.2.8"));
  EXPECT_EQ(105, ErrorOf(elsewhere));
  EXPECT_EQ("noprivilege", WordOf(elsewhere));
  EXPECT_EQ(0, ErrorOf(Call(Open("boss", "192.0.2.7"))));
}

TEST_F(Permission, OnlyActivityRenewsASession) {
  const std::string id = Open("boss");
  Age(id, 300);
  const std::int64_t before = LastActive(id);
  EXPECT_EQ(117, ErrorOf(Call(id, "silent")));
  EXPECT_EQ(before, LastActive(id));
  EXPECT_EQ(0, ErrorOf(Call(id)));
  EXPECT_LT(before, LastActive(id));
}

TEST_F(Permission, LevelsDecideWhetherARefusalCounts) {
  Describe(R"("authLevel":0)");
  EXPECT_EQ(0, ErrorOf(Call("nonsense")));
  Describe(R"("authLevel":2)");
  const std::string served = Call("nonsense");
  EXPECT_EQ(0, ErrorOf(served));
  EXPECT_EQ("noprivilege", WordOf(served));
}

TEST_F(Permission, TokensOpenWhatTheyName) {
  AccessToken token;
  token.user = "member";
  token.scopes = {{"ORBO.Test.Good", {"echo", "checked"}}};
  std::string text;
  ASSERT_TRUE(CreateToken(token, text));
  EXPECT_EQ(0, ErrorOf(CallByToken(text)));
  EXPECT_EQ(105, ErrorOf(CallByToken(text, "checked")));  // the user's class still counts
  const std::string other = CallByToken(text, "silent");
  EXPECT_EQ(119, ErrorOf(other));
  EXPECT_EQ("unauth", WordOf(other));
  EXPECT_EQ(119, ErrorOf(CallByToken(text + "x")));
  EXPECT_TRUE(RevokeToken(token.id));
  EXPECT_EQ(119, ErrorOf(CallByToken(text)));
}

TEST_F(Permission, AHandlersOwnCheckKnowsOnlyOneRefusal) {
  APIRequest request(FromText(R"({"reqLib":{"allowUser":["normal.local"]},
                                  "session":{"username":"member"}})"));
  const std::string id = Open("member");
  const auto check = [&](const char* session) {
    APIResponse response(&request);
    const bool passed = APIAuth::CheckPermission(&request, &response, session, false);
    return passed ? 0 : response.GetError();
  };
  EXPECT_EQ(0, check(id.c_str()));
  EXPECT_EQ(105, check(nullptr));
  EXPECT_EQ(105, check(""));
  Age(id, 11 * 60);
  EXPECT_EQ(105, check(id.c_str()));
  EXPECT_FALSE(APIAuth::CheckAllowUser(&request, nullptr));
  EXPECT_FALSE(APIAuth::CheckAllowUser(&request, ""));
  EXPECT_FALSE(APIAuth::CheckAllowUser(&request, "member@ldap"));
}

TEST_F(Permission, UpdateTimeoutTouchesTheSessionAlone) {
  const std::string id = Open("member");
  Age(id, 300);
  const std::int64_t before = LastActive(id);
  APIRequest request{Json::Value()};
  for (const std::string& bad : {std::string(), std::string("../sessions/") + id, "./" + id}) {
    request.SetCookie("id", bad);
    EXPECT_FALSE(APIAuth::UpdateTimeout(&request));
  }
  EXPECT_EQ(before, LastActive(id));
  request.SetCookie("id", id);
  EXPECT_TRUE(APIAuth::UpdateTimeout(&request));
  EXPECT_LT(before, LastActive(id));
}

}  // namespace
}  // namespace ORBO
