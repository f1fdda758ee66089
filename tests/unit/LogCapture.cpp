#include "unit/LogCapture.h"

#include <cstdarg>
#include <cstdio>

namespace {

bool g_capturing = false;
std::vector<std::string> g_lines;
std::string g_identity;

}  // namespace

// These stand before the C library's own, which the tests must not write to.
extern "C" {

void vsyslog(int /*priority*/, const char* format, va_list arguments) {
  char line[4096];
  std::vsnprintf(line, sizeof line, format, arguments);
  if (g_capturing) {
    g_lines.emplace_back(line);
  }
}

void __vsyslog_chk(int priority, int /*flag*/, const char* format, va_list arguments) {
  vsyslog(priority, format, arguments);
}

void openlog(const char* identity, int /*option*/, int /*facility*/) { g_identity = identity; }

void closelog() {}

}  // extern "C"

namespace ORBO {

LogCapture::LogCapture() { g_capturing = true; }

LogCapture::~LogCapture() {
  g_capturing = false;
  g_lines.clear();
}

const std::vector<std::string>& LogCapture::lines() const { return g_lines; }

bool LogCapture::Has(const std::string& text) const {
  bool found = false;
  for (const std::string& line : g_lines) {
    found = found || line.find(text) != std::string::npos;
  }
  return found;
}

std::string LogIdentity() { return g_identity; }

}  // namespace ORBO
