#include "runner/description_candidates.h"

namespace ORBO {
namespace {

constexpr std::size_t kMaxCandidates = 4;
constexpr char kExtension[] = ".lib";

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

}  // namespace ORBO
