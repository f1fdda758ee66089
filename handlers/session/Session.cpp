// Login sessions: opening one by a password, looking at it, closing it, and for
// administrators those of others.

#include <webapi/APITable.h>

#include "session_methods.h"

namespace {

constexpr char kOpenAPI[] = "ORBO.Session";
constexpr char kManageAPI[] = "ORBO.Session.Manage";

ORBO::_tag_API_TABLE methods[] = {
    {kOpenAPI, 1, "open", ORBO::OpenSession},   {kManageAPI, 1, "close", ORBO::CloseSession},
    {kManageAPI, 1, "show", ORBO::ShowSession}, {kManageAPI, 1, "list", ORBO::ListAllSessions},
    {kManageAPI, 1, "kill", ORBO::KillSession}, {nullptr, 0, nullptr, nullptr},
};

}  // namespace

ORBO::_tag_API_TABLE* GetAPITable() { return methods; }
