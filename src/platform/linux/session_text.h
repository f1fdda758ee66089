#pragma once

#include <string>

#include "platform/linux/session_store.h"

namespace ORBO {

// The content of session files: a JSON object with the session's facts but for its
// last activity.

// Whether `name` can be a user's name: 1 to 492 bytes without control characters.
bool IsStorableUser(const std::string& name);

std::string ToSessionText(const Session& session);

// False, and `out` unchanged, if `text` is no such object, lacks the user or has a
// member of the wrong type.
bool FromSessionText(const std::string& text, Session& out);

}  // namespace ORBO
