#pragma once

#include <functional>
#include <string>

namespace ORBO::tool {

struct ApartResult {
  std::string output;
  bool in_time;  // false: the process was ended
  int status;    // as of waitpid(2)
};

// Runs `work` in a process of its own, with /dev/null for the standard streams, and
// ends that after `seconds`.  `work` writes its output, a text that ends with a line
// end, to the descriptor that it is given; without one it did not get to its end.
// Throws std::exception if there is no process.
ApartResult RunApart(int seconds, const std::function<void(int)>& work);

}  // namespace ORBO::tool
