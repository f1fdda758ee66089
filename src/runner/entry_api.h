#pragma once

namespace ORBO {

// The API that the runner serves itself, without a handler library and without a
// permission check of its own: each call in its list is checked for itself.
inline constexpr char kEntryAPI[] = "ORBO.Entry.Request";
inline constexpr char kEntryMethod[] = "request";

}  // namespace ORBO
