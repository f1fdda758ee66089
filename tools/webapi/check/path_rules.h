#pragma once

#include <set>
#include <string>

#include "check/Findings.h"

namespace ORBO::tool {

// Judges who may change files that the CGI programs run or obey: whoever may acts with
// the web server's rights.
class PathCheck {
 public:
  explicit PathCheck(Findings& findings) : findings_(findings) {}

  // Judges `path`, the directories on the way to it, and what links there lead to, each
  // once.  True if nobody may change them but root and who runs this command.  What does
  // not exist is passed over.
  bool Check(const std::string& path);

 private:
  bool Judge(const std::string& path);
  bool CheckOne(const std::string& path);

  Findings& findings_;
  std::set<std::string> safe_;
  std::set<std::string> unsafe_;
};

}  // namespace ORBO::tool
