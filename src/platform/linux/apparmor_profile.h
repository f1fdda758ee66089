#pragma once

#include <string_view>

namespace ORBO {

// Whether the process that finds `text` in its "attr/apparmor/current" is
// confined.  The text is a profile's name and in parentheses its mode, as in
// "webapi//hat (enforce)", or the one word "unconfined".
bool IsConfining(std::string_view text);

}  // namespace ORBO
