#pragma once

#include <cstdint>

namespace ORBO {

// The token of this process's confinement hats: the same one enters and leaves
// a hat.  Computed once when the library is loaded, so that forked children
// leave the hats of their parent with the parent's token.
extern const std::uint32_t kHatToken;

}  // namespace ORBO
