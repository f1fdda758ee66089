// Tells clients the key for which they encipher parameters; there is nothing secret
// about it.

#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>
#include <webapi/APITable.h>

#include <cerrno>
#include <cstring>

#include "platform/linux/parameter_key.h"
#include "platform/linux/wall_clock.h"
#include "util/log.h"

namespace {

constexpr char kSource[] = "ParameterKey.cpp";
// Names the whole format: a client that knows another one only does not encipher.
constexpr char kAlgorithm[] = "ECDH-P256+HKDF-SHA256+AES256GCM";
constexpr int kErrorUnavailable = 1201;

void GetKey(ORBO::APIRequest* /*request*/, ORBO::APIResponse* response) {
  ORBO::ParameterKey key;
  if (!ORBO::CurrentParameterKey(key)) {
    ORBO::Log(LOG_ERR, "%s:%d cannot make a key: %s", kSource, __LINE__, std::strerror(errno));
    response->SetError(kErrorUnavailable);
    return;
  }
  Json::Value data(Json::objectValue);
  data["kid"] = key.id;
  data["algorithm"] = kAlgorithm;
  data["spki"] = key.spki;
  data["time"] = Json::Int64{ORBO::WallClock()};
  response->SetSuccess(data);
}

ORBO::_tag_API_TABLE methods[] = {
    {"ORBO.ParameterKey", 1, "get", GetKey},
    {nullptr, 0, nullptr, nullptr},
};

}  // namespace

ORBO::_tag_API_TABLE* GetAPITable() { return methods; }
