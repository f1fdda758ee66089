#include "runner/description_candidates.h"

#include <glob.h>

#include "platform/files.h"

namespace ORBO {
namespace {

constexpr std::size_t kMaxCandidates = 4;
constexpr char kExtension[] = ".lib";
constexpr char kPattern[] = "*.lib";

}  // namespace

std::vector<std::string> DescriptionCandidates(const std::string& api) {
  std::vector<std::string> candidates;
  if (api.empty() || api.find('/') != std::string::npos || api.find('\0') != std::string::npos) {
    return candidates;
  }
  std::size_t dot = api.find('.');
  while (dot != std::string::npos && candidates.size() < kMaxCandidates) {
    dot = api.find('.', dot + 1);
    candidates.push_back(api.substr(0, dot) + kExtension);
  }
  if (candidates.empty()) {
    candidates.push_back(api + kExtension);
  }
  return candidates;
}

std::string ExistingCandidate(const std::string& api) {
  const std::vector<std::string> candidates = DescriptionCandidates(api);
  for (auto path = candidates.rbegin(); path != candidates.rend(); ++path) {
    if (QLIBCFileExist(path->c_str()) == 1) {
      return *path;
    }
  }
  return {};
}

std::vector<std::string> DescriptionFileNames() {
  glob_t found{};
  std::vector<std::string> names;
  if (glob(kPattern, 0, nullptr, &found) == 0) {
    names.assign(found.gl_pathv, found.gl_pathv + found.gl_pathc);
  }
  globfree(&found);
  return names;
}

}  // namespace ORBO
