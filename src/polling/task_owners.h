#pragma once

#include <string_view>

namespace ORBO {

// The names of the groups that tasks can be shared with, and the owners that their
// tasks are filed under.
inline constexpr std::string_view kAdminGroup = "admin";
inline constexpr std::string_view kEveryoneGroup = "everyone";
inline constexpr std::string_view kAdminOwner = "@administrators";
inline constexpr std::string_view kEveryoneOwner = "@users";

// What the owners begin with that are no users, and no user's name that has tasks.
inline constexpr char kNoUser = '@';

}  // namespace ORBO
