#include "util/hat_token.h"

#include <unistd.h>

namespace ORBO {
namespace {

constexpr std::uint32_t kOffset = 0x4b455035;

}  // namespace

const std::uint32_t kHatToken = static_cast<std::uint32_t>(getpid()) + kOffset;

}  // namespace ORBO
