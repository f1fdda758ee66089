#include <gtest/gtest.h>
#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>

#include <climits>
#include <ctime>

#include "unit/LogCapture.h"
#include "unit/json.h"

namespace ORBO {
namespace {

TEST(APIResponse, BodyFollowsTheLastResult) {
  APIResponse response(nullptr);
  EXPECT_EQ(FromText("{}"), response.GetBody());
  EXPECT_FALSE(response.Redirect("/a") || response.SetHeader("", "v"));
  EXPECT_EQ(200, response.GetStatus());
  response.SetHeader("Status", "404 x");
  EXPECT_EQ(404, response.GetStatus());
  response.SetSuccess(FromText("[1]"));
  EXPECT_EQ(FromText(R"({"success":true,"data":[1]})"), response.GetBody());
  response.SetError(-7, Json::Value("x"));
  EXPECT_EQ(FromText(R"({"success":false,"error":{"code":-7,"errors":"x"}})"), response.GetBody());
  EXPECT_EQ(-7, response.GetError());
  response.SetError(0, Json::Value(false));
  EXPECT_EQ(FromText(R"({"success":true,"data":false})"), response.GetBody());
  response.SetSuccess();
  EXPECT_EQ(FromText(R"({"success":true})"), response.GetBody());
}

TEST(APIResponse, CookiesCarryTheirAttributes) {
  using SameSite = APICookie::SameSite;
  const std::string latest =
      sizeof(std::time_t) == 8 ? "Fri, 31-Dec-9999 23:59:59 GMT" : "Tue, 19-Jan-2038 03:14:07 GMT";
  const struct {
    APICookie cookie;
    std::string expected;               // "" where it is refused
    const char* client_time = nullptr;  // null: there is no request
  } rows[] = {
      {{"id", "a b", "/", "", 0, true, true}, "id=a%20b; path=/; secure; httponly", "5"},
      {{"a_b-9", "\xc3\xa9;", "/p", "example.org", 1},
       "a_b-9=%C3%A9%3B; path=/p; expires=Sun, 09-Sep-2001 01:47:40 GMT; domain=example.org",
       "1000000000"},
      {{"b", "1", "/", "", 1}, "b=1; path=/; expires=Sat, 20-Dec-1969 10:13:20 GMT", "-1000060"},
      {{"c", "1", "/", "", 1}, "c=1; path=/; expires=Thu, 01-Jan-1970 00:01:00 GMT", "[]"},
      {{"d", "1", "/", "", 1}, "d=1; path=/; expires=" + latest, "9223372036854775807"},
      {{"e", "1", "/", "", LONG_MAX}, "e=1; path=/; expires=" + latest},
      {{"f", "1", "/", "", -1, false, false, SameSite::kLax},
       "f=1; path=/; expires=Thu, 01-Jan-1970 00:00:01 GMT; samesite=Lax",
       "5"},
      {{"g", "1", "/", "", 0, true, false, SameSite::kStrict},
       "g=1; path=/; secure; samesite=Strict"},
      {{"h", "1", "/", "", 0, true, false, SameSite::kNone}, "h=1; path=/; secure; samesite=None"},
      {{"i", "1", "/", "", 0, false, false, SameSite::kNone}, ""},
      {{"my.id", "1", "/", ""}, ""},
      {{"a b", "1", "/", ""}, ""},
      {{"l", "", "/", ""}, ""},
      {{"", "1", "/", ""}, ""},
      {{"m", "1", "", ""}, ""},
  };
  const LogCapture log;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.cookie.name);
    Json::Value options;
    options["getParam"]["client_time"] =
        FromText(row.client_time != nullptr ? row.client_time : "0");
    APIRequest request(options);
    APIResponse response(row.client_time != nullptr ? &request : nullptr);
    EXPECT_EQ(!row.expected.empty(), response.AddCookie(row.cookie));
    EXPECT_EQ(row.expected, response.GetCookies().get(0U, "").asString());
  }
  EXPECT_TRUE(log.Has("APIResponse(84)AddCookie: key[my.id] contains invalid character"));
}

}  // namespace
}  // namespace ORBO
