#include "testing/cgi_request.h"

#include <string_view>

#include "platform/linux/key_name.h"
#include "platform/webapi_util.h"
#include "util/json_text.h"
#include "util/json_types.h"

namespace ORBO {
namespace {

constexpr std::size_t kBoundaryBytes = 24;

// The parameters with those that name the call.
Json::Value AllParams(const CallDescription& call) {
  Json::Value params = call.params;
  params["api"] = call.api;
  params["version"] = call.version;
  params["method"] = call.method;
  return params;
}

std::string ToParamLine(const Json::Value& params) {
  std::string line;
  for (auto param = params.begin(); param != params.end(); ++param) {
    line.append(line.empty() ? "" : "&").append(WebAPIUtil::URLEncode(param.name()));
    line.append("=").append(WebAPIUtil::URLEncode(JSON::ToText(*param)));
  }
  return line;
}

// A name within a form's header, as browsers write it.
std::string Quoted(const std::string& name) {
  std::string text = "\"";
  for (const char c : name) {
    if (c == '"' || c == '\r' || c == '\n') {
      text += c == '"' ? "%22" : c == '\r' ? "%0D" : "%0A";
    } else {
      text += c;
    }
  }
  return text + '"';
}

// A form (RFC 7578) with the parameters in front of the files.
std::string ToForm(const Json::Value& params, const std::vector<FormFile>& files,
                   const std::string& boundary) {
  const std::string begin = "--" + boundary + "\r\nContent-Disposition: form-data; name=";
  std::string form;
  for (auto param = params.begin(); param != params.end(); ++param) {
    const std::string text = JSON::IsString(*param) ? JSON::AsString(*param) : JSON::ToText(*param);
    form.append(begin).append(Quoted(param.name())).append("\r\n\r\n").append(text).append("\r\n");
  }
  for (const FormFile& file : files) {
    form.append(begin).append(Quoted(file.field)).append("; filename=").append(Quoted(file.name));
    form.append("\r\nContent-Type: application/octet-stream\r\n\r\n");
    form.append(file.content).append("\r\n");
  }
  return form.append("--").append(boundary).append("--\r\n");
}

std::string CookieLine(const Variables& cookies) {
  std::string line;
  for (const auto& [name, value] : cookies) {
    line.append(line.empty() ? "" : "; ").append(name).append("=");
    line.append(WebAPIUtil::URLEncode(value));
  }
  return line;
}

void SetBody(std::string body, const std::string& type, CgiRequest& request) {
  request.variables["CONTENT_TYPE"] = type;
  request.variables["CONTENT_LENGTH"] = std::to_string(body.size());
  request.body = std::move(body);
}

}  // namespace

CgiRequest ToCgiRequest(const CallDescription& call) {
  const char* const usual = call.files.empty() ? "GET" : "POST";
  const std::string method = call.http_method.empty() ? usual : call.http_method;
  const Json::Value params = AllParams(call);
  CgiRequest request;
  request.variables = {{"GATEWAY_INTERFACE", "CGI/1.1"},
                       {"HTTP_HOST", "localhost"},
                       {"PATH", "/usr/local/bin:/usr/bin:/bin"},
                       {"QUERY_STRING", ""},
                       {"REMOTE_ADDR", "127.0.0.1"},
                       {"REQUEST_METHOD", method},
                       {"REQUEST_SCHEME", "http"},
                       {"SCRIPT_NAME", "/webapi/entry.cgi"},
                       {"SERVER_NAME", "localhost"},
                       {"SERVER_PORT", "80"},
                       {"SERVER_PROTOCOL", "HTTP/1.1"},
                       {"SERVER_SOFTWARE", "webapi-test"}};
  if (!call.files.empty()) {
    const std::string boundary = NewKeyName('b', kBoundaryBytes);
    SetBody(ToForm(params, call.files, boundary), "multipart/form-data; boundary=" + boundary,
            request);
  } else if (method == "POST") {
    SetBody(ToParamLine(params), "application/x-www-form-urlencoded", request);
  } else {
    request.variables["QUERY_STRING"] = ToParamLine(params);
  }
  if (!call.cookies.empty()) {
    request.variables["HTTP_COOKIE"] = CookieLine(call.cookies);
  }
  for (const auto& [name, value] : call.variables) {
    std::string& variable = request.variables[name];
    if (name != "HTTP_COOKIE") {
      variable.clear();
    }
    // The line of a header goes behind the cookies, of which one is the session's.
    variable.append(variable.empty() ? "" : "; ").append(value);
  }
  return request;
}

std::string HeaderVariable(const std::string& header) {
  std::string name = "HTTP_";
  for (const char c : header) {
    name += c == '-' ? '_' : c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  }
  // These two describe the body and have no prefix.
  return name == "HTTP_CONTENT_TYPE" || name == "HTTP_CONTENT_LENGTH" ? name.substr(5) : name;
}

}  // namespace ORBO
