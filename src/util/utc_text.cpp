#include "util/utc_text.h"

#include <locale.h>

namespace ORBO {
namespace {

constexpr std::size_t kLongestDate = 1024;

class EnglishLocale {
 public:
  EnglishLocale() : locale_(newlocale(LC_ALL_MASK, "C", nullptr)) {}
  ~EnglishLocale() { freelocale(locale_); }
  EnglishLocale(const EnglishLocale&) = delete;
  EnglishLocale& operator=(const EnglishLocale&) = delete;

  locale_t get() const { return locale_; }

 private:
  locale_t locale_;
};

}  // namespace

std::string FormatUtc(std::time_t time, const char* format) {
  std::tm parts{};
  if (gmtime_r(&time, &parts) == nullptr) {
    return "Fri, 31-Dec-9999 23:59:59 GMT";
  }
  const EnglishLocale english;
  char text[kLongestDate];
  return std::string(text, strftime_l(text, sizeof text, format, &parts, english.get()));
}

bool ParseUtc(const std::string& text, const char* format, std::time_t& time) {
  const EnglishLocale english;
  std::tm parts{};
  const char* const end = strptime_l(text.c_str(), format, &parts, english.get());
  if (end == nullptr || end != text.c_str() + text.size()) {
    return false;
  }
  const std::time_t parsed = timegm(&parts);
  if (parsed < 0) {
    return false;
  }
  time = parsed;
  return true;
}

}  // namespace ORBO
