#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "check/json_source.h"

namespace ORBO::tool {

struct JsonFault {
  std::size_t offset;
  std::string text;
};

// The first place where `text` is no JSON document with comments; none for one that
// the loader can read.
std::optional<JsonFault> FindJsonFault(std::string_view text);

// Reports what the loader reads in a way that its author did not mean: of two members
// of one name only the last, numbers that are too large, bytes that are no UTF-8.
// The text is well-formed.
void CheckJsonValues(const JsonSource& source, Findings& findings);

}  // namespace ORBO::tool
