#include "check/place_rules.h"

#include <string>
#include <vector>

#include "check/known_names.h"
#include "runner/description_candidates.h"

namespace ORBO::tool {

void CheckPlaceOf(const DescribedFile& file, const DescriptionFile::Entry& entry,
                  Findings& findings) {
  const std::vector<std::string> candidates = DescriptionCandidates(entry.api);
  const std::string existing = ExistingCandidate(entry.api);
  if (candidates.empty()) {
    findings.Error(file.At(entry), "no call can name the API " + Quoted(entry.api));
  } else if (!IsOneOf(candidates, file.name())) {
    std::string names;
    for (const std::string& candidate : candidates) {
      names += (names.empty() ? "" : " or ") + candidate;
    }
    findings.Error(file.At(entry),
                   "the loader does not look for " + entry.api + " in this file, but in " + names);
  } else if (existing != file.name()) {
    findings.Error(file.At(entry),
                   existing + " hides this: the loader looks for " + entry.api + " there alone");
  }
}

}  // namespace ORBO::tool
