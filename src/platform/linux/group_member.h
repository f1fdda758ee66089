#pragma once

#include <string>

namespace ORBO {

// Whether the user belongs to the group.  What the name service says is kept for a
// while; see fact_cache.h.
bool IsGroupMember(const std::string& user, const std::string& group);

}  // namespace ORBO
