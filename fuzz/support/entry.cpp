#include <cstdint>

#include "support/FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ORBO::TestInput(ORBO::FuzzInput(data, size));
  return 0;
}
