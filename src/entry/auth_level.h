#pragma once

#include <json/value.h>

namespace ORBO {

enum class AuthLevel {
  kNone,  // no permission check
  kRequired,
  kOptional,  // the check is made and its failure ignored
};

// The "authLevel" of a description: 0, 1 or 2.  Anything else, a missing value
// and a value of another type included, requires the check.
AuthLevel ToAuthLevel(const Json::Value& value);

}  // namespace ORBO
