// The cookies of a request: the first line is a session id, the rest the Cookie line.

#include <webapi/APIRequest.h>

#include <string>

#include "entry/session_cookie.h"
#include "platform/webapi_util.h"
#include "request/cookie_line.h"
#include "support/target.h"
#include "support/text.h"
#include "util/json_types.h"

namespace ORBO {
namespace {

Json::Value Cookies(const std::string& line) {
  Json::Value cookies(Json::objectValue);
  ParseCookieLine(line, cookies);
  return cookies;
}

}  // namespace

void TestInput(FuzzInput input) {
  const std::string id = input.TakeLine();
  const std::string line(input.TakeRest());
  const Json::Value cookies = Cookies(line);
  Require(cookies.size() <= CountOf(line, ';') + 1 && cookies.size() <= CountOf(line, '='));

  std::string written;
  std::string spread;
  for (auto cookie = cookies.begin(); cookie != cookies.end(); ++cookie) {
    const std::string name = cookie.name();
    Require(JSON::IsString(*cookie) && name.find_first_of(";=") == std::string::npos);
    Require(line.find(name + "=") != std::string::npos);
    const std::string value = WebAPIUtil::URLEncode(JSON::AsString(*cookie));
    written += (written.empty() ? "" : ";") + name + "=" + value;
    spread += "x; \t" + name + "=" + value + " ;";
  }
  Require(Cookies(written) == cookies && Cookies(spread) == cookies);

  // What is given as the session id is the cookie "id", whatever the client sent.
  const std::string with_id = WithSessionCookie(line, id);
  Json::Value expected = Cookies("id=" + id);
  for (const std::string& name : expected.getMemberNames()) {
    Require(JSON::At(Cookies(with_id), name) == expected[name]);
  }
  Require(with_id.size() <= line.size() + id.size() + sizeof "abandoned; ");

  APIRequest request{Json::Value()};
  Json::Value env;
  env["HTTP_COOKIE"] = with_id;
  request.InitEnv(env);
  Require(request.GetCookie("id", "") == JSON::AsString(expected["id"]));
}

}  // namespace ORBO
