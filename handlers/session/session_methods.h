#pragma once

namespace ORBO {

class APIRequest;
class APIResponse;

// ORBO.Session: open to everybody.
void OpenSession(APIRequest* request, APIResponse* response);

// ORBO.Session.Manage: the permission check has passed, for administrators where the
// description says so.
void CloseSession(APIRequest* request, APIResponse* response);
void ShowSession(APIRequest* request, APIResponse* response);
void ListAllSessions(APIRequest* request, APIResponse* response);
void KillSession(APIRequest* request, APIResponse* response);

}  // namespace ORBO
