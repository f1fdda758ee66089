#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Numbers as decimal text, both ways, independent of the process's locale.
namespace ORBO::JSON {

// An integer by its sign and its amount, so that the whole signed and unsigned
// 64-bit ranges have one form.  Zero has no sign.
struct Integer {
  bool negative = false;
  std::uint64_t amount = 0;
};

// Reads an optional sign and digits, and nothing else.  False, and `out`
// unchanged, for any other text and for amounts beyond 64 bits.
bool ReadInteger(std::string_view text, Integer& out);

// Whether the integer lies in the signed 64-bit range; if so it is in `out`.
bool ToSigned(const Integer& integer, std::int64_t& out);

// Reads a JSON number.  False, and `out` unchanged, if no finite double is near
// it.
bool ReadReal(std::string_view text, double& out);

void AppendInteger(std::int64_t value, std::string& out);
void AppendInteger(std::uint64_t value, std::string& out);
// The shortest text that reads back as `value`, always with a point or an
// exponent, so that it reads back as a real.  `value` is finite.
void AppendReal(double value, std::string& out);

}  // namespace ORBO::JSON
