#pragma once

#include <string>

#include "platform/linux/token_store.h"

namespace ORBO::tool {

// Reads "API", for all of its methods, or "API:METHOD,METHOD...".  False, and `out`
// unchanged, for any other text.
bool ReadScope(const std::string& text, TokenScope& out);

// The scope in the form that ReadScope reads.
std::string ScopeText(const TokenScope& scope);

}  // namespace ORBO::tool
