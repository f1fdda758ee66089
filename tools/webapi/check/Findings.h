#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace ORBO::tool {

// Where something is wrong, as editors and compilers name it.
struct Place {
  std::string file;
  std::size_t line = 0;    // from 1; 0: the file as a whole
  std::size_t column = 0;  // in bytes, from 1; 0: the line as a whole
};

enum class Severity { kError, kWarning };

struct Finding {
  Place place;
  Severity severity;
  std::string text;
};

// What a check has found.
class Findings {
 public:
  // What cannot be meant so: it is refused, or never has the effect that it names.
  void Error(const Place& place, const std::string& text) {
    list_.push_back({place, Severity::kError, text});
  }
  // What works and is worth a look.
  void Warn(const Place& place, const std::string& text) {
    list_.push_back({place, Severity::kWarning, text});
  }

  // In the order of files, lines and columns.
  std::vector<Finding> Sorted() const;
  std::size_t Count(Severity severity) const;

 private:
  std::vector<Finding> list_;
};

// "error" or "warning"
const char* SeverityName(Severity severity);

// "FILE:LINE:COLUMN", with what there is of it.
std::string PlaceText(const Place& place);

}  // namespace ORBO::tool
