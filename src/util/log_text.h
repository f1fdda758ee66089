#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ORBO {

// `text` as it may stand in the system log or in a process's name: cut at `limit`
// bytes, and every control character replaced by "?", so that a client can
// neither add lines nor flood the log.
std::string LogText(std::string_view text, std::size_t limit = 256);

}  // namespace ORBO
