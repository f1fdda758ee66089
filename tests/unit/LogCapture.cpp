#include "unit/LogCapture.h"

#include <syslog.h>

#include <cstdarg>
#include <cstdio>

namespace {

ORBO::LogCapture* g_capture = nullptr;
std::string g_identity;

void Capture(const char* format, va_list arguments) {
  char line[4096];
  std::vsnprintf(line, sizeof line, format, arguments);
  if (g_capture != nullptr) {
    g_capture->Add(line);
  }
}

}  // namespace

// These stand before the C library's own, which the tests must not write to.
extern "C" {

void vsyslog(int /*priority*/, const char* format, va_list arguments) {
  Capture(format, arguments);
}

void __vsyslog_chk(int /*priority*/, int /*flag*/, const char* format, va_list arguments) {
  Capture(format, arguments);
}

void openlog(const char* identity, int /*option*/, int /*facility*/) { g_identity = identity; }

void closelog() {}

}  // extern "C"

namespace ORBO {

LogCapture::LogCapture() { g_capture = this; }

LogCapture::~LogCapture() { g_capture = nullptr; }

bool LogCapture::Has(const std::string& text) const {
  for (const std::string& line : lines_) {
    if (line.find(text) != std::string::npos) {
      return true;
    }
  }
  return false;
}

std::string LogIdentity() { return g_identity; }

}  // namespace ORBO
