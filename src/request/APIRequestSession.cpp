#include <strings.h>

#include <cstdint>
#include <limits>

#include "platform/cgi.h"
#include "request/APIRequestPrivate.h"
#include "request/user_class.h"
#include "util/json_types.h"

namespace ORBO {
namespace {

constexpr uid_t kNoUser = static_cast<uid_t>(-1);
constexpr std::size_t kAddressSize = 65;

// What is no user id counts as nobody, never as user 0.
uid_t ToUID(const Json::Value& value) {
  const std::int64_t number = JSON::IsIntegral(value) ? JSON::AsInt64(value) : -1;
  if (number < 0 || number > std::numeric_limits<std::uint32_t>::max() ||
      (number == 0 && JSON::AsUInt64(value) != 0)) {
    return kNoUser;
  }
  return static_cast<uid_t>(number);
}

}  // namespace

uid_t APIRequestPrivate::GetLoginUID() {
  if (HasData("session", "uid")) {
    return ToUID(GetData("session", "uid", Json::Value(-1)));
  }
  const std::string session_id = GetText("cookie", "id", "");
  const std::string user_name = GetText("session", "username", "");
  if (user_name.empty()) {
    return kNoUser;
  }
  const uid_t uid = OrboCgiUIDGet(session_id.c_str(), user_name.c_str());
  // The store refuses a bare name, so the platform is asked at every call and
  // a user who is removed meanwhile is noticed.
  SetData("session", Json::Value("uid"), false);
  return uid;
}

int APIRequestPrivate::GetAllowUser() {
  const int known = JSON::AsInt(GetData("session", "allowUser", Json::Value(0)));
  if (known != 0) {
    return known;
  }
  const Json::Value& classes = GetData("reqLib", "allowUser", Json::Value::nullSingleton());
  if (!JSON::IsArray(classes) || JSON::IsEmpty(classes)) {
    return 0;
  }
  const int mask = UserClassMask(classes);
  SetData("session", "allowUser", mask, false);
  return mask;
}

std::string APIRequestPrivate::GetRemoteIP() {
  if (!HasData("environ", "orbo_remoteIP")) {
    char address[kAddressSize] = {};
    if (OrboCgiGetRemoteIP(address, sizeof address) != 0) {
      SetData("environ", "orbo_remoteIP", Json::Value(address), true);
    }
  }
  return GetText("environ", "orbo_remoteIP", "");
}

bool APIRequestPrivate::IsSliceUploadRequest() {
  return strcasecmp(GetText("environ", "HTTP_X_TYPE_NAME", "").c_str(), "SLICEUPLOAD") == 0;
}

bool APIRequestPrivate::IsUploadRequest() {
  const std::string type = GetText("environ", "CONTENT_TYPE", "");
  return type.find("multipart/form-data") != std::string::npos || IsSliceUploadRequest();
}

}  // namespace ORBO
