#include "platform/linux/auth_module.h"
#include "platform/linux/modules/auth/crypt_hash.h"
#include "platform/linux/modules/auth/pam_service.h"

extern "C" __attribute__((visibility("default"))) const ORBO::AuthModule* webapi_auth_module();

extern "C" const ORBO::AuthModule* webapi_auth_module() {
  static constexpr ORBO::AuthModule kModule = {ORBO::CryptHash, ORBO::AskPamService};
  return &kModule;
}
