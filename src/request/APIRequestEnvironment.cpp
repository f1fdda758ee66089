#include <strings.h>

#include <algorithm>

#include "request/APIRequestPrivate.h"
#include "request/cookie_line.h"
#include "request/host_port.h"
#include "util/json_types.h"

namespace ORBO {

void APIRequestPrivate::InitRequestMethod() {
  const std::string method = GetText("environ", "REQUEST_METHOD", "");
  if (method == "GET") {
    request_method_ = APIRequest::METHOD_GET;
  } else if (method == "POST") {
    request_method_ = APIRequest::METHOD_POST;
  } else if (method == "HEAD") {
    request_method_ = APIRequest::METHOD_HEAD;
  }
}

void APIRequestPrivate::InitCookie() {
  const Json::Value* line = JSON::Find(root_["environ"], "HTTP_COOKIE");
  if (line != nullptr && JSON::IsString(*line)) {
    ParseCookieLine(JSON::AsString(*line), root_["cookie"]);
  }
}

void APIRequestPrivate::InitURL() {
  if (HasData("url", "initialized")) {
    return;
  }
  // The store refuses the mark, since it is no object: the URL is derived anew
  // at every query and follows later changes of the environment.
  SetData("url", Json::Value("initialized"), true);
  ParseProtocol();
  ParseHostAndPort();
  ParsePathAndName();
}

bool APIRequestPrivate::ParseProtocol() {
  const bool secure =
      strcasecmp(GetText("environ", "HTTPS", "").c_str(), "ON") == 0 ||
      strcasecmp(GetText("environ", "HTTP_X_FORWARDED_PROTO", "").c_str(), "https") == 0;
  std::string protocol = "https";
  if (!secure) {
    protocol = GetText("environ", "SCRIPT_URI", "");
    protocol.resize(std::min(protocol.size(), protocol.find(':')));
  }
  return SetData("url", "urlProto", protocol, true);
}

bool APIRequestPrivate::ParseHostAndPort() {
  HostPort address;
  if (!SplitHostPort(GetText("environ", "HTTP_HOST", ""), address)) {
    return false;
  }
  if (address.port.empty()) {
    address.port = DefaultPort(GetText("url", "urlProto", ""));
  }
  return SetData("url", "urlHost", address.host, true) &&
         SetData("url", "urlPort", address.port, true);
}

bool APIRequestPrivate::ParsePathAndName() {
  // Neither part is stored: the path and name queries answer with the caller's
  // default whatever the script's name is.
  return GetText("environ", "SCRIPT_NAME", "").rfind('/') != std::string::npos;
}

}  // namespace ORBO
