#pragma once

#include <cstdlib>
#include <string>
#include <string_view>

namespace ORBO {

// What must hold whatever the input is.  A fuzzer and a replay stop where it does not.
inline void Require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

// Takes an input apart from its front.  Text is split by lines, so that seeds are files
// that one can write by hand.
class FuzzInput {
 public:
  explicit FuzzInput(std::string_view input) : rest_(input) {}

  bool IsEmpty() const { return rest_.empty(); }
  // 0 at the end.
  unsigned char TakeByte() {
    const std::string_view byte = Take(1);
    return byte.empty() ? 0 : static_cast<unsigned char>(byte[0]);
  }
  // Without its line feed.
  std::string TakeLine() {
    const std::string_view line = Take(rest_.find('\n'));
    Take(1);
    return std::string(line);
  }
  std::string_view TakeRest() { return Take(rest_.size()); }

 private:
  std::string_view Take(std::size_t size) {
    const std::string_view taken = rest_.substr(0, size);
    rest_.remove_prefix(taken.size());
    return taken;
  }

  std::string_view rest_;
};

// What a target does with an input; each defines it.
void TestInput(FuzzInput input);

}  // namespace ORBO
