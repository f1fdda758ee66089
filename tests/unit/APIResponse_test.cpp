#include <gtest/gtest.h>
#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>

#include <ctime>

#include "response/APIResponsePrivate.h"
#include "unit/LogCapture.h"
#include "unit/json.h"

namespace ORBO {
namespace {

TEST(APIResponse, BodyFollowsTheLastResult) {
  APIResponse response(nullptr);
  EXPECT_EQ(FromText("{}"), response.GetBody());
  EXPECT_FALSE(response.Redirect("/a")) << "without a request";
  EXPECT_EQ(200, response.GetStatus());
  response.SetSuccess(FromText("[1]"));
  EXPECT_EQ(FromText(R"({"success":true,"data":[1]})"), response.GetBody());
  response.SetError(400, Json::Value("x"));
  EXPECT_EQ(FromText(R"({"success":false,"error":{"code":400,"errors":"x"}})"), response.GetBody());
  EXPECT_EQ(400, response.GetError());
  response.SetError(0, Json::Value(false));
  EXPECT_EQ(FromText(R"({"success":true,"data":false})"), response.GetBody());
  response.SetSuccess();
  EXPECT_EQ(FromText(R"({"success":true})"), response.GetBody());
}

TEST(APIResponse, CookiesAreFormattedWhole) {
  APIRequest request(FromText(R"({"getParam":{"client_time":1000000000}})"));
  APIResponse owner(&request);
  APIResponsePrivate response(&request, &owner);
  EXPECT_TRUE(response.AddCookie("id", "a b", "/", 0, "", true, true));
  EXPECT_TRUE(response.AddCookie("a_b-9", "\xc3\xa9;", "/p", 1, "example.org", false, false));
  EXPECT_TRUE(response.AddCookie("id", "x", "/", -5, "", false, true));
  EXPECT_FALSE(response.AddCookie("id", "", "/", 0, "", false, false));
  EXPECT_FALSE(response.AddCookie("", "x", "/", 0, "", false, false));
  EXPECT_FALSE(response.AddCookie("id", "x", "", 0, "", false, false));
  EXPECT_EQ(FromText(R"(["id=a%20b; path=/; secure; httponly",
      "a_b-9=%C3%A9%3B; path=/p; expires=Sun, 09-Sep-2001 01:47:40 GMT; domain=example.org",
      "id=x; path=/; expires=Thu, 01-Jan-1970 00:00:01 GMT; httponly"])"),
            response.GetData("setCookie", "", Json::Value()));
}

TEST(APIResponse, CookiesCarryTheirAttributes) {
  using SameSite = APICookie::SameSite;
  const struct {
    APICookie cookie;
    const char* expected;  // null where it is refused
  } rows[] = {
      {{"a", "1", "/", "", 0, false, false, SameSite::kUnset}, "a=1; path=/"},
      {{"b", "1", "/", "", 0, true, true, SameSite::kStrict},
       "b=1; path=/; secure; httponly; samesite=Strict"},
      {{"c", "1", "/", "", -1, false, false, SameSite::kLax},
       "c=1; path=/; expires=Thu, 01-Jan-1970 00:00:01 GMT; samesite=Lax"},
      {{"d", "1", "/", "", 0, true, false, SameSite::kNone}, "d=1; path=/; secure; samesite=None"},
      {{"e", "1", "/", "", 0, false, false, SameSite::kNone}, nullptr},
      {{"f", "1", "/;secure", "", 0, false, false, SameSite::kLax}, nullptr},
      {{"g", "1", "/", "a\nb", 0, false, false, SameSite::kLax}, nullptr},
      {{"h", "", "/", "", 0, false, false, SameSite::kLax}, nullptr},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.cookie.name);
    APIResponse response(nullptr);
    EXPECT_EQ(row.expected != nullptr, response.AddCookie(row.cookie));
    Json::Value expected(Json::arrayValue);
    if (row.expected != nullptr) {
      expected.append(row.expected);
    }
    EXPECT_EQ(expected, response.GetCookies());
  }
}

TEST(APIResponse, CookieDatesSurviveHostileClocks) {
  const char* const kLatest =
      sizeof(std::time_t) == 8 ? "Fri, 31-Dec-9999 23:59:59 GMT" : "Tue, 19-Jan-2038 03:14:07 GMT";
  for (const auto& [time, date] : {std::pair("-1000060", "Sat, 20-Dec-1969 10:13:20 GMT"),
                                   std::pair("[]", "Thu, 01-Jan-1970 00:01:00 GMT"),
                                   std::pair("9223372036854775807", kLatest)}) {
    APIRequest request(FromText(std::string(R"({"getParam":{"client_time":)") + time + "}}"));
    APIResponse owner(&request);
    APIResponsePrivate response(&request, &owner);
    EXPECT_TRUE(response.AddCookie("id", "x", "/", 1, "", false, false));
    EXPECT_EQ(std::string("id=x; path=/; expires=") + date,
              response.GetData("setCookie", "", Json::Value())[0].asString());
  }
}

TEST(APIResponse, CookieNamesAreChecked) {
  APIResponse response(nullptr);
  for (const char* name : {"my.id", "a b", "a\r\nb", "n\xc3\xa4me"}) {
    LogCapture log;
    EXPECT_FALSE(response.AddCookie("/", name, "x")) << name;
    EXPECT_TRUE(log.Has("APIResponse(84)AddCookie: key["));
    EXPECT_TRUE(log.Has("] contains invalid character"));
  }
  EXPECT_EQ(FromText("[]"), response.GetCookies());
}

}  // namespace
}  // namespace ORBO
