#include "platform/linux/auth_module.h"
#include "platform/linux/modules/auth/crypt_hash.h"
#include "platform/linux/modules/auth/pam_service.h"

extern "C" __attribute__((visibility("default"))) const ORBO::AuthModule* WebapiAuthModule();

extern "C" const ORBO::AuthModule* WebapiAuthModule() {
  static constexpr ORBO::AuthModule kModule = {ORBO::CryptHash, ORBO::AskPamService};
  return &kModule;
}
