#include "platform/cgi.h"
#include "platform/linux/name_service.h"

// The session's own data play no part: on this platform a user's name is the
// same in every session.
uid_t OrboCgiUIDGet(const char* /*session_id*/, const char* user_name) {
  return ORBO::UserId(user_name);
}
