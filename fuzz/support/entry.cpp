#include <cstdint>

#include "support/target.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ORBO::TestInput(ORBO::FuzzInput({reinterpret_cast<const char*>(data), size}));
  return 0;
}
