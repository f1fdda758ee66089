#include "time_text.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "util/number_text.h"

namespace ORBO::tool {
namespace {

struct Unit {
  char letter;
  std::int64_t seconds;
};

// From the largest.
constexpr std::array<Unit, 5> kUnits = {
    {{'w', 604800}, {'d', 86400}, {'h', 3600}, {'m', 60}, {'s', 1}}};
// Of an age nobody counts weeks.
constexpr std::size_t kLargestAgeUnit = 1;
// A hundred years: what is meant to be longer has no end.
constexpr std::int64_t kLongest = std::int64_t{36525} * 86400;

bool ReadSpan(const std::string& text, std::int64_t& out) {
  std::int64_t amount = 0;
  JSON::Integer integer;
  if (text.empty() || !JSON::ReadInteger(text.substr(0, text.size() - 1), integer) ||
      !JSON::ToSigned(integer, amount) || amount <= 0 || amount > kLongest) {
    return false;
  }
  for (const Unit& unit : kUnits) {
    if (unit.letter == text.back() && amount <= kLongest / unit.seconds) {
      out = amount * unit.seconds;
      return true;
    }
  }
  return false;
}

bool ReadMoment(const std::string& text, const char* format, std::int64_t& out) {
  std::tm fields{};
  const char* const end = strptime(text.c_str(), format, &fields);
  if (end == nullptr || *end != '\0') {
    return false;
  }
  fields.tm_isdst = -1;
  const int day = fields.tm_mday;
  const std::time_t time = std::mktime(&fields);
  // The thirtieth of February would be a day in March.
  if (time == -1 || fields.tm_mday != day) {
    return false;
  }
  out = time;
  return true;
}

}  // namespace

std::string AgeText(std::int64_t time, std::int64_t now) {
  const std::int64_t age = time < now ? now - time : 0;
  for (std::size_t i = kLargestAgeUnit; i < kUnits.size(); ++i) {
    if (age >= kUnits[i].seconds) {
      return std::to_string(age / kUnits[i].seconds) + kUnits[i].letter;
    }
  }
  return "0s";
}

std::string TimeText(std::int64_t time) {
  const auto moment = static_cast<std::time_t>(time);
  std::tm fields{};
  char text[64];
  // Where time_t has 32 bits it ends in 2038.
  if (moment != time || localtime_r(&moment, &fields) == nullptr ||
      std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &fields) == 0) {
    return std::to_string(time);
  }
  return text;
}

bool ReadExpiry(const std::string& text, std::int64_t now, std::int64_t& out) {
  if (text == "never") {
    out = 0;
    return true;
  }
  std::int64_t span = 0;
  if (ReadSpan(text, span)) {
    out = now + span;
    return true;
  }
  std::int64_t moment = 0;
  if ((ReadMoment(text, "%Y-%m-%d", moment) || ReadMoment(text, "%Y-%m-%d %H:%M", moment)) &&
      moment > now) {
    out = moment;
    return true;
  }
  return false;
}

}  // namespace ORBO::tool
