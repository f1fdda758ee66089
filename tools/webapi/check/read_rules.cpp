#include "check/read_rules.h"

#include <unistd.h>

#include <filesystem>
#include <sstream>
#include <system_error>

#include "run_apart.h"
#include "service_rights.h"
#include "util/write_file.h"

namespace ORBO::tool {
namespace {

constexpr int kSeconds = 10;

// The positions in `names` of those that this process cannot read.
std::string Unreadable(const std::vector<std::string>& names, const std::string& directory) {
  std::string positions;
  for (std::size_t i = 0; i < names.size(); ++i) {
    // By the whole path, since the directories above count, too.
    if (access((directory + "/" + names[i]).c_str(), R_OK) != 0) {
      positions += std::to_string(i) + " ";
    }
  }
  return positions;
}

}  // namespace

void CheckReading(const std::vector<std::string>& names, const std::string& shown,
                  Findings& findings) {
  const std::string user = ServiceUser();
  if (user.empty()) {
    return;
  }
  std::error_code error;
  const std::string directory = std::filesystem::current_path(error).string();
  const ApartResult result = RunApart(kSeconds, [&](int output) {
    TakeServiceRights();
    WriteAll(output, Unreadable(names, directory) + "\n");
  });
  std::istringstream positions(result.output);
  for (std::size_t i = 0; positions >> i;) {
    if (access(names[i].c_str(), R_OK) == 0) {
      findings.Error({shown + names[i]},
                     "the CGI programs, which run as " + user + ", cannot read this file");
    }
  }
}

}  // namespace ORBO::tool
