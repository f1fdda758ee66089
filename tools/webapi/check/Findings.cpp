#include "check/Findings.h"

#include <algorithm>
#include <tuple>

namespace ORBO::tool {

std::vector<Finding> Findings::Sorted() const {
  std::vector<Finding> sorted = list_;
  std::stable_sort(sorted.begin(), sorted.end(), [](const Finding& a, const Finding& b) {
    return std::tie(a.place.file, a.place.line, a.place.column) <
           std::tie(b.place.file, b.place.line, b.place.column);
  });
  return sorted;
}

std::size_t Findings::Count(Severity severity) const {
  return static_cast<std::size_t>(
      std::count_if(list_.begin(), list_.end(),
                    [severity](const Finding& finding) { return finding.severity == severity; }));
}

const char* SeverityName(Severity severity) {
  return severity == Severity::kError ? "error" : "warning";
}

std::string PlaceText(const Place& place) {
  std::string text = place.file;
  for (const std::size_t number : {place.line, place.column}) {
    if (number != 0) {
      text += ":" + std::to_string(number);
    }
  }
  return text;
}

}  // namespace ORBO::tool
