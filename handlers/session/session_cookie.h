#pragma once

#include <string>

namespace ORBO {

class APIRequest;
class APIResponse;

// The cookie by which browsers show their session: out of reach of scripts, for
// requests of the own site only, and over https only where it was given over https.
void SendSessionCookie(APIRequest* request, APIResponse* response, const std::string& session_id);
void DeleteSessionCookie(APIRequest* request, APIResponse* response);

}  // namespace ORBO
