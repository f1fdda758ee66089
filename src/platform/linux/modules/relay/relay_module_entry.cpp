#include "platform/linux/modules/relay/http_exchange.h"
#include "platform/linux/relay_module.h"

extern "C" __attribute__((visibility("default"))) const ORBO::RelayModule* WebapiRelayModule();

extern "C" const ORBO::RelayModule* WebapiRelayModule() {
  static constexpr ORBO::RelayModule kModule = {ORBO::ExchangeByCurl};
  return &kModule;
}
