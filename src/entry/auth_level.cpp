#include "entry/auth_level.h"

#include "util/json_types.h"

namespace ORBO {

AuthLevel ToAuthLevel(const Json::Value& value) {
  // By storage: a conversion would turn an unreadable level into 0.
  if (!JSON::IsInt(value)) {
    return AuthLevel::kRequired;
  }
  switch (JSON::AsInt64(value)) {
    case 0:
      return AuthLevel::kNone;
    case 2:
      return AuthLevel::kOptional;
    default:
      return AuthLevel::kRequired;
  }
}

}  // namespace ORBO
