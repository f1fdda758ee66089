// Login sessions: opening one by a password, looking at it, closing it, and for
// administrators those of others.

#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>
#include <webapi/APITable.h>

#include "session_methods.h"
#include "util/error_codes.h"

namespace {

using ORBO::APIRequest;
using ORBO::APIResponse;

// The API asks for the permission check and goes on when it fails, so that who has no
// session can open one.  Every other method ends here with the error of that check.
bool HasPermission(APIRequest* request, APIResponse* response) {
  if (response->GetError() != 0) {
    return false;
  }
  // Also where a site's description has switched the check off.
  if (!request->IsAuthorized()) {
    response->SetError(ORBO::kErrorNotAuthenticated);
    return false;
  }
  return true;
}

constexpr char kAPI[] = "ORBO.Session";

ORBO::_tag_API_TABLE methods[] = {
    {kAPI, 1, "open", ORBO::OpenSession}, {kAPI, 1, "close", ORBO::CloseSession},
    {kAPI, 1, "show", ORBO::ShowSession}, {kAPI, 1, "list", ORBO::ListAllSessions},
    {kAPI, 1, "kill", ORBO::KillSession}, {nullptr, 0, nullptr, nullptr},
};

// The last row is the fallback: a method added later is closed until it says otherwise.
ORBO::_tag_API_CHECK_TABLE checks[] = {
    {kAPI, 1, "open", nullptr, nullptr, nullptr},
    {nullptr, 0, nullptr, HasPermission, nullptr, nullptr},
};

}  // namespace

ORBO::_tag_API_TABLE* GetAPITable() { return methods; }
ORBO::_tag_API_CHECK_TABLE* GetAPICheckTable() { return checks; }
