#include "platform/linux/relay_module.h"

#include "platform/linux/module_path.h"
#include "platform/linux/send_content.h"

namespace ORBO {
namespace {

constexpr char kFile[] = "webapi-KEP5-relay.so";

const RelayModule* Open() {
  void* const entry = ModuleSymbol(kFile, kRelayModuleEntry);
  return entry != nullptr ? reinterpret_cast<RelayModuleEntry>(entry)() : nullptr;
}

}  // namespace

void MakeRelayExchange(const RelayExchange& exchange, RelayAnswer& answer) {
  static const RelayModule* const kModule = Open();
  if (kModule == nullptr) {
    answer.error = kRelayNoClient;
    answer.message = "no relay module";
    return;
  }
  // The library leaves the signal alone, and some of its writes raise it.
  const BrokenPipeGuard guard;
  kModule->exchange(exchange, answer);
}

}  // namespace ORBO
