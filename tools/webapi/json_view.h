#pragma once

#include <json/value.h>

namespace ORBO::tool {

// Prints a document: indented and coloured on a terminal, on one line elsewhere.
// False, after a complaint, if it did not get there.
bool PrintDocument(const Json::Value& value);

}  // namespace ORBO::tool
