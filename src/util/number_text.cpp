#include "util/number_text.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

namespace ORBO::JSON {
namespace {

// Holds every 64-bit integer and every shortest double.
constexpr std::size_t kBufferSize = 32;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

template <typename T>
std::string_view Write(T value, char (&buffer)[kBufferSize]) {
  const std::to_chars_result result = std::to_chars(buffer, buffer + kBufferSize, value);
  return {buffer, static_cast<std::size_t>(result.ptr - buffer)};
}

// The exponent of a number's text, cut at what no mantissa makes up for.
std::int64_t ExponentOf(std::string_view text) {
  static constexpr std::int64_t kBound = std::int64_t{1} << 60;
  const std::size_t mark = text.find_first_of("eE");
  if (mark == std::string_view::npos) {
    return 0;
  }
  text.remove_prefix(mark + 1);
  const bool negative = text.front() == '-';
  if (!IsDigit(text.front())) {
    text.remove_prefix(1);
  }
  std::int64_t amount = kBound;
  std::from_chars(text.data(), text.data() + text.size(), amount);
  return std::min(amount, kBound) * (negative ? -1 : 1);
}

// Whether a number that no double is near is too small rather than too large:
// the library tells both in one way.  `text` has no sign and is not 0.
bool IsTiny(std::string_view text) {
  const std::size_t point = std::min(text.find_first_of(".eE"), text.size());
  const std::size_t first_digit = text.find_first_not_of("0.");
  const std::int64_t magnitude =
      static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first_digit);
  return magnitude + ExponentOf(text) < 0;
}

}  // namespace

bool ReadInteger(std::string_view text, Integer& out) {
  const bool negative = !text.empty() && text.front() == '-';
  if (negative || (!text.empty() && text.front() == '+')) {
    text.remove_prefix(1);
  }
  if (text.empty() || !std::all_of(text.begin(), text.end(), IsDigit)) {
    return false;
  }
  std::uint64_t amount = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), amount).ec != std::errc()) {
    return false;
  }
  out.negative = negative && amount != 0;
  out.amount = amount;
  return true;
}

bool ToSigned(const Integer& integer, std::int64_t& out) {
  static constexpr std::uint64_t kLargest = std::numeric_limits<std::int64_t>::max();
  if (integer.amount > kLargest + (integer.negative ? 1 : 0)) {
    return false;
  }
  // The complement of amount - 1 reaches the smallest number without overflow.
  out = integer.negative ? -static_cast<std::int64_t>(integer.amount - 1) - 1
                         : static_cast<std::int64_t>(integer.amount);
  return true;
}

bool ReadReal(std::string_view text, double& out) {
  const std::from_chars_result result =
      std::from_chars(text.data(), text.data() + text.size(), out);
  if (result.ec == std::errc()) {
    return true;
  }
  const bool negative = text.front() == '-';
  if (!IsTiny(text.substr(negative ? 1 : 0))) {
    return false;
  }
  out = negative ? -0.0 : 0.0;
  return true;
}

void AppendInteger(std::int64_t value, std::string& out) {
  char buffer[kBufferSize];
  out += Write(value, buffer);
}

void AppendInteger(std::uint64_t value, std::string& out) {
  char buffer[kBufferSize];
  out += Write(value, buffer);
}

void AppendReal(double value, std::string& out) {
  char buffer[kBufferSize];
  const std::string_view text = Write(value, buffer);
  out += text;
  if (text.find_first_of(".e") == std::string_view::npos) {
    out += ".0";
  }
}

}  // namespace ORBO::JSON
