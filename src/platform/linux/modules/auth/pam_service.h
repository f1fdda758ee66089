#pragma once

#include "platform/linux/password_check.h"

namespace ORBO {

// AuthModule::ask_service by the pluggable authentication modules (PAM).
PasswordResult AskPamService(const char* directory, const char* user, const char* password,
                             const char* address);

}  // namespace ORBO
