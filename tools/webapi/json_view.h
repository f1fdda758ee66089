#pragma once

#include <json/value.h>

#include <string>

namespace ORBO::tool {

// `value` as indented and coloured JSON for a terminal, without a final line end.
std::string ColouredJson(const Json::Value& value);

}  // namespace ORBO::tool
