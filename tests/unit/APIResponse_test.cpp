#include <gtest/gtest.h>
#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>

#include <ctime>
#include <stdexcept>

#include "response/APIResponsePrivate.h"
#include "unit/LogCapture.h"
#include "unit/json.h"

namespace ORBO {
namespace {

void Nothing(void* /*argument*/) {}

TEST(APIResponse, BodyFollowsTheLastResult) {
  APIResponse response(nullptr);
  EXPECT_EQ(FromText("{}"), response.GetBody());
  response.SetSuccess();
  EXPECT_EQ(FromText(R"({"success":true})"), response.GetBody());
  response.SetSuccess(FromText("[1]"));
  EXPECT_EQ(FromText(R"({"success":true,"data":[1]})"), response.GetBody());
  response.SetError(400, Json::Value("x"));
  EXPECT_EQ(FromText(R"({"success":false,"error":{"code":400,"errors":"x"}})"), response.GetBody());
  EXPECT_EQ(400, response.GetError());
  response.SetError(105);
  EXPECT_EQ(FromText(R"({"success":false,"error":{"code":105}})"), response.GetBody());
  response.SetError(0, Json::Value(false));
  EXPECT_EQ(FromText(R"({"success":true,"data":false})"), response.GetBody());
  EXPECT_EQ(0, response.GetError());
}

TEST(APIResponse, StatusIsTheLeadingNumber) {
  const struct {
    const char* header;
    int status;
  } rows[] = {{"404", 404},
              {"404 x", 404},
              {" 302", 302},
              {"x", 0},
              {"", 0},
              {"99999999999", 2147483647},
              {"-99999999999", -2147483647 - 1}};
  APIResponse response(nullptr);
  EXPECT_EQ(200, response.GetStatus());
  for (const auto& row : rows) {
    SCOPED_TRACE(row.header);
    response.SetHeader("Status", row.header);
    EXPECT_EQ(row.status, response.GetStatus());
  }
  EXPECT_TRUE(response.SetStatus(HTTP_STATUS_NOT_FOUND, "Not Found"));
  EXPECT_EQ("404", response.GetHeader("Status", ""));
}

TEST(APIResponse, CallbacksAreKeptOnceAndInOrder) {
  int first = 0;
  int second = 0;
  APIResponse response(nullptr);
  response.SetCallbackFunc(Nothing, &first);
  response.SetCallbackFunc(Nothing, &second);
  response.SetCallbackFunc(Nothing, &first);
  response.SetCallbackFunc(nullptr, &first);
  APIResponse other(nullptr);
  other.SetCallbackFunc(Nothing, &second);
  other.SetCallbackFuncs(response.GetCallbackFuncs());
  other.SetCallbackFuncs(nullptr);
  const auto& list = *static_cast<APIResponsePrivate::CallbackList*>(other.GetCallbackFuncs());
  ASSERT_EQ(2U, list.size());
  EXPECT_EQ(&second, list[0].second);
  EXPECT_EQ(&first, list[1].second);
}

TEST(APIResponse, RedirectsOnTheSameHost) {
  APIRequest request(FromText(
      R"({"environ":{"SCRIPT_URI":"http://nas:5000/webapi/entry.cgi","HTTP_HOST":"nas:5000"}})"));
  for (const char* path : {"/a?b=c", "a?b=c"}) {
    APIResponse response(&request);
    EXPECT_TRUE(response.Redirect(path));
    EXPECT_EQ("http://nas:5000/a?b=c", response.GetHeader("Location", ""));
    EXPECT_EQ(302, response.GetStatus());
  }
  APIResponse response(&request);
  try {
    response.Redirect("");
    ADD_FAILURE() << "an empty path is accepted";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ("basic_string::at", error.what());
  }
  APIResponse without_request(nullptr);
  EXPECT_FALSE(without_request.Redirect("/a"));
  EXPECT_EQ(200, without_request.GetStatus());
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
  const struct {
    const char* time;
    const char* date;
  } rows[] = {
      {"-1000060", "Sat, 20-Dec-1969 10:13:20 GMT"},
      {"\"x\"", "Thu, 01-Jan-1970 00:01:00 GMT"},
      {"[]", "Thu, 01-Jan-1970 00:01:00 GMT"},
      {"9223372036854775807", kLatest},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.time);
    APIRequest request(FromText(std::string(R"({"getParam":{"client_time":)") + row.time + "}}"));
    APIResponse owner(&request);
    APIResponsePrivate response(&request, &owner);
    EXPECT_TRUE(response.AddCookie("id", "x", "/", 1, "", false, false));
    EXPECT_EQ(std::string("id=x; path=/; expires=") + row.date,
              response.GetData("setCookie", "", Json::Value())[0].asString());
  }
}

TEST(APIResponse, CookieNamesAreChecked) {
  APIResponse response(nullptr);
  for (const char* name : {"my.id", "a b", "a\r\nb", "n\xc3\xa4me"}) {
    SCOPED_TRACE(name);
    LogCapture log;
    EXPECT_FALSE(response.AddCookie("/", name, "x"));
    EXPECT_TRUE(log.Has("APIResponse(84)AddCookie: key["));
    EXPECT_TRUE(log.Has("] contains invalid character"));
  }
  EXPECT_EQ(FromText("[]"), response.GetCookies());
}

}  // namespace
}  // namespace ORBO
