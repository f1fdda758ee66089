#include "relay_view.h"

#include "output.h"

namespace ORBO::tool {

bool LoadTargets(std::vector<ListedTarget>& out) {
  if (!MayRead(RelayTargetDirectory(), "read the relay targets")) {
    return false;
  }
  for (const std::int64_t id : RelayTargetIds()) {
    ListedTarget& listed = out.emplace_back();
    listed.id = id;
    ReadRelayTarget(id, listed.target, listed.problem);
  }
  return true;
}

std::string TrustText(const RelayTarget& target) {
  if (target.url.rfind("https:", 0) != 0) {
    return "none (http)";
  }
  std::string text = !target.is_verified        ? "NOT VERIFIED"
                     : target.authority.empty() ? "system"
                                                : "ca " + target.authority;
  return text + (target.pin.empty() ? "" : ", pinned key");
}

}  // namespace ORBO::tool
