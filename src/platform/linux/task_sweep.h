#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ORBO {

struct ListedTask {
  std::int64_t created;
  std::string id;
};

// The tasks in an owner's directory whose ids begin with `prefix`, in no order.  None
// is expired; records that are get removed on the way.
std::vector<ListedTask> CurrentTasks(const std::string& directory, const std::string& prefix);

// Removes expired records and what killed writers have left, once in 10 s at most.
void SweepTasks(const std::string& directory);

}  // namespace ORBO
