#include "explain/described_call.h"

#include "check/entry_rules.h"
#include "check/method_rules.h"
#include "runner/description_candidates.h"
#include "runner/description_rules.h"
#include "util/paths.h"

namespace ORBO::tool {
namespace {

std::string Joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) {
    text += (text.empty() ? "" : " or ") + name;
  }
  return text;
}

// The first error that was found.
std::string ErrorText(const Findings& findings) {
  for (const Finding& finding : findings.Sorted()) {
    if (finding.severity == Severity::kError) {
      return PlaceText(finding.place) + ": " + finding.text;
    }
  }
  return "the loader cannot use it";
}

}  // namespace

DescribedCall::DescribedCall(const std::string& api) : fault_(FindFault(api)) {}

std::string DescribedCall::FindFault(const std::string& api) {
  const std::vector<std::string> candidates = DescriptionCandidates(api);
  const std::string name = ExistingCandidate(api);
  if (name.empty()) {
    return candidates.empty() ? "no file can describe an API of this name"
                              : "there is no " + Joined(candidates);
  }
  Findings findings;
  const std::string shown = RootedPath(kWebAPIDirectory) + name;
  file_ = DescribedFile::Read(name, shown, findings);
  entry_ = file_ != nullptr ? file_->Find(api) : nullptr;
  if (file_ == nullptr) {
    return ErrorText(findings);
  }
  if (entry_ == nullptr) {
    return shown + " does not describe it, and is the only file that may";
  }
  if (!IsValidDescription(*entry_)) {
    DescriptionDefaults none;
    CheckEntry(*file_, *entry_, none, findings);
    return ErrorText(findings);
  }
  return {};
}

std::string DescribedCall::PlaceOf() const { return PlaceText(file_->At(*entry_)); }

std::string DescribedCall::PlaceOf(const char* key) const {
  return PlaceText(file_->At(*entry_, key));
}

std::string DescribedCall::PlaceOf(int version, const std::string& method) const {
  for (const ListedMethod& listed : ListedMethods(*entry_)) {
    if (listed.version == version && listed.name == method) {
      return PlaceText(file_->source().At(listed.text));
    }
  }
  return PlaceOf("methods");
}

std::vector<std::string> DescribedCall::MethodsOf(int version) const {
  std::vector<std::string> names;
  for (const ListedMethod& listed : ListedMethods(*entry_)) {
    if (listed.version == version) {
      names.push_back(listed.name);
    }
  }
  return names;
}

}  // namespace ORBO::tool
