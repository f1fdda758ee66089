#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/linux/relay_target.h"

namespace ORBO::tool {

// A target with its id, or why it cannot be used.
struct ListedTarget {
  std::int64_t id = 0;
  RelayTarget target;
  std::string problem;
};

// All targets in the order of their ids.  False, after a complaint, if this process may
// not read them.
bool LoadTargets(std::vector<ListedTarget>& out);

// How the target is told from an impostor.
std::string TrustText(const RelayTarget& target);

}  // namespace ORBO::tool
