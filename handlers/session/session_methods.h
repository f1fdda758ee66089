#pragma once

namespace ORBO {

class APIRequest;
class APIResponse;

// Open to everybody.
void OpenSession(APIRequest* request, APIResponse* response);

// Called when the permission check has passed, for administrators where the
// description says so.
void CloseSession(APIRequest* request, APIResponse* response);
void ShowSession(APIRequest* request, APIResponse* response);
void ListAllSessions(APIRequest* request, APIResponse* response);
void KillSession(APIRequest* request, APIResponse* response);

}  // namespace ORBO
