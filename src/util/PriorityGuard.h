#pragma once

namespace ORBO {

// Runs the process at the nice value `priority` while it lives, and at its
// previous one afterwards.  An equal value changes nothing.
class PriorityGuard {
 public:
  explicit PriorityGuard(int priority);
  ~PriorityGuard();

  PriorityGuard(const PriorityGuard&) = delete;
  PriorityGuard& operator=(const PriorityGuard&) = delete;

 private:
  int previous_ = 0;
  bool changed_ = false;
};

}  // namespace ORBO
