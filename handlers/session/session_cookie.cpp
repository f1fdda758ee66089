#include "session_cookie.h"

#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>

namespace ORBO {
namespace {

APICookie SessionCookie(APIRequest* request, const std::string& value) {
  APICookie cookie;
  cookie.name = "id";
  cookie.value = value;
  cookie.secure = request->GetURLProto("") == "https";
  cookie.http_only = true;
  cookie.same_site = APICookie::SameSite::kStrict;
  return cookie;
}

}  // namespace

void SendSessionCookie(APIRequest* request, APIResponse* response, const std::string& session_id) {
  response->AddCookie(SessionCookie(request, session_id));
}

void DeleteSessionCookie(APIRequest* request, APIResponse* response) {
  APICookie cookie = SessionCookie(request, "deleted");
  cookie.expire_minutes = -1;
  response->AddCookie(cookie);
}

}  // namespace ORBO
