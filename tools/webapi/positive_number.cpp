#include "positive_number.h"

#include <cstdint>
#include <limits>

#include "util/number_text.h"

namespace ORBO::tool {

bool ReadPositiveNumber(std::string_view text, int& number) {
  JSON::Integer integer;
  std::int64_t value = 0;
  if (!JSON::ReadInteger(text, integer) || !JSON::ToSigned(integer, value) || value < 1 ||
      value > std::numeric_limits<int>::max()) {
    return false;
  }
  number = static_cast<int>(value);
  return true;
}

}  // namespace ORBO::tool
