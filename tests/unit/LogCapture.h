#pragma once

#include <string>
#include <vector>

namespace ORBO {

// Collects the lines that the system log gets while it lives.  One at a time.
class LogCapture {
 public:
  LogCapture();
  ~LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  const std::vector<std::string>& lines() const;
  // Whether any line holds `text`.
  bool Has(const std::string& text) const;
};

// The identity that the log was opened with last.
std::string LogIdentity();

}  // namespace ORBO
