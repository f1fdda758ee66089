#pragma once

#include <memory>
#include <string_view>

namespace ORBO {

// A piece of a larger text that lives as long as anybody holds a piece of it.
struct SharedText {
  std::shared_ptr<const void> owner;
  std::string_view text;
};

}  // namespace ORBO
