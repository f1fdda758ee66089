// What handlers put into the header and the body of an answer.  Each line of an input is
// a letter for an operation and its arguments, percent-encoded, with "|" between them.

#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include "entry/http_header.h"
#include "platform/webapi_util.h"
#include "support/cgi_answer.h"
#include "support/target.h"
#include "support/text.h"
#include "transfer/content_disposition.h"
#include "util/header_line.h"
#include "util/json_types.h"

namespace ORBO {
namespace {

constexpr std::size_t kMostArguments = 6;
constexpr std::size_t kLinesAgainstCaching = 3;

using Arguments = std::vector<std::string>;

// At least kMostArguments, of which the last may be empty.
Arguments Split(const std::string& line) {
  Arguments arguments;
  for (std::size_t begin = 0, end = 0; begin <= line.size(); begin = end + 1) {
    end = std::min(line.find('|', begin), line.size());
    arguments.push_back(WebAPIUtil::URLDecode(line.substr(begin, end - begin), true));
  }
  arguments.resize(std::max(arguments.size(), kMostArguments));
  return arguments;
}

int Number(const std::string& text) { return JSON::AsInt(Json::Value(text)); }

// A cookie holds the attributes that were asked for and no other.
void AddCookie(const Arguments& a, APIResponse& response) {
  APICookie cookie;
  cookie.name = a[0];
  cookie.value = a[1];
  cookie.path = a[2];
  cookie.domain = a[3];
  cookie.expire_minutes = Number(a[4]);
  cookie.secure = a[5].find('s') != std::string::npos;
  cookie.http_only = a[5].find('h') != std::string::npos;
  cookie.same_site = static_cast<APICookie::SameSite>(a[5].size() % 4);
  if (response.AddCookie(cookie)) {
    const Json::Value cookies = response.GetCookies();
    const std::string text = JSON::AsString(cookies[cookies.size() - 1]);
    const int attributes = 1 + (cookie.expire_minutes != 0 ? 1 : 0) +
                           (cookie.domain.empty() ? 0 : 1) + (cookie.secure ? 1 : 0) +
                           (cookie.http_only ? 1 : 0) + (a[5].size() % 4 != 0 ? 1 : 0);
    Require(CountOf(text, ';') == static_cast<std::size_t>(attributes));
    Require(!BreaksHeaderLine(text));
  }
}

void Redirect(const std::string& path, APIRequest& request, APIResponse& response) {
  try {
    Require(response.Redirect(path));
    const std::string base =
        request.GetURLProto("") + "://" + JSON::AsString(request.GetEnv("HTTP_HOST", ""));
    const std::string location = response.GetHeader("Location", "");
    Require(location.compare(0, base.size() + 1, base + "/") == 0 && response.GetStatus() == 302);
  } catch (const std::out_of_range&) {
    Require(path.empty());
  }
}

void Attach(const std::string& name, APIResponse& response) {
  const std::string value = AttachmentDisposition(name);
  Require(CountOf(value, '"') == 2 && value.compare(0, 22, "attachment; filename=\"") == 0);
  Require(std::all_of(value.begin(), value.end(), [](char c) { return c >= ' ' && c < 0x7F; }));
  response.SetHeader("Content-Disposition", value);
}

void SetRequest(const Arguments& a, APIRequest& request) {
  Json::Value env;
  env["HTTP_HOST"] = a[0];
  env["SCRIPT_URI"] = a[1];
  env["HTTPS"] = a[2];
  env["HTTP_X_FORWARDED_PROTO"] = a[3];
  request.InitEnv(env);
  Json::Value params;
  params["getParam"]["client_time"] = ValueOf(a[4]);
  request.InitParam(params, false);
  request.GetURLPort(0);
}

void Do(char operation, const Arguments& a, APIRequest& request, APIResponse& response) {
  if (operation == 'H') {
    Require(response.SetHeader(a[0], a[1]) == !a[0].empty());
  } else if (operation == 'E') {
    response.SetServerError(a[0]);
  } else if (operation == 'C') {
    AddCookie(a, response);
  } else if (operation == 'P') {
    response.AddCookie(a[0], a[1], a[2]);
  } else if (operation == 'R') {
    Redirect(a[0], request, response);
  } else if (operation == 'S') {
    response.SetStatus(static_cast<_tag_HTTP_STATUS_CODE>(Number(a[0])), a[1]);
  } else if (operation == 'A') {
    Attach(a[0], response);
  } else if (operation == 'V') {
    SetRequest(a, request);
  } else if (operation == 'J') {
    response.SetSuccess(ValueOf(a[0]));
  } else {
    response.SetError(Number(a[0]), ValueOf(a[1]));
  }
}

}  // namespace

void TestInput(FuzzInput input) {
  APIRequest request{Json::Value()};
  APIResponse response(&request);
  response.SetSuccess();
  while (!input.IsEmpty()) {
    const std::string line = input.TakeLine();
    if (!line.empty()) {
      Do(line[0], Split(line.substr(1)), request, response);
    }
  }
  // No line that nobody has set; what would break its line is left out.
  const Json::Value headers = response.GetHeaders();
  const Json::Value cookies = response.GetCookies();
  Require(HeaderLines(FormatHeaderBlock(headers, cookies)).size() <=
          kLinesAgainstCaching + headers.size() + cookies.size());
  CodeOf(response.GetBody());
}

}  // namespace ORBO
