#pragma once

#include <set>
#include <string>
#include <vector>

namespace ORBO {

// What the confinement operations of this test program do: the machine's kernel
// may have no AppArmor.
struct FakeConfinement {
  bool confined = false;
  std::set<std::string> hats;  // the hats that exist
  bool may_leave = true;
  std::vector<std::string> changes;  // hats entered or tried, "-" for leaving

  static FakeConfinement& Get();
};

}  // namespace ORBO
