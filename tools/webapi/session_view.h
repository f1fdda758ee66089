#pragma once

#include <json/value.h>

#include <string>
#include <vector>

#include "platform/linux/session_store.h"

// Sessions as commands name and show them.
namespace ORBO::tool {

// False, after a complaint, if this process may not see the sessions.
bool MayReadSessions();

// The sessions in `out`.  False, after a complaint, if they cannot be shown.
bool LoadSessions(std::vector<ListedSession>& out);

// Finds the session that `name`, its id or its handle, names.  False if there is
// none.
bool FindSession(const std::string& name, ListedSession& out);

// "active", "timed out"
std::string StateText(const ListedSession& listed);

// What programs get to see; never the id.
Json::Value ToJson(const ListedSession& listed);

}  // namespace ORBO::tool
