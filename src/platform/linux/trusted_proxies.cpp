#include "platform/linux/trusted_proxies.h"

#include <cstdlib>
#include <string_view>

#include "platform/linux/platform_conf.h"
#include "util/trim.h"

namespace ORBO {
namespace {

constexpr char kSetting[] = "trusted_proxies";

// Takes the last piece of the list off it.  False at its beginning.
bool TakeLast(std::string_view& list, bool& more, std::string_view& piece) {
  if (!more) {
    return false;
  }
  const std::size_t comma = list.rfind(',');
  more = comma != std::string_view::npos;
  piece = Trim(more ? list.substr(comma + 1) : list);
  list = more ? list.substr(0, comma) : std::string_view();
  return true;
}

}  // namespace

bool PeerAddress(Address& out) {
  const char* const text = std::getenv("REMOTE_ADDR");
  return text != nullptr && ParseAddress(text, out);
}

bool IsTrustedProxy(const Address& address) {
  return ContainAddress(SplitSetting(PlatformSetting(kSetting)), address, kSetting);
}

Address ForwardedClient(const Address& proxy) {
  const char* const header = std::getenv("HTTP_X_FORWARDED_FOR");
  const std::vector<std::string> trusted = SplitSetting(PlatformSetting(kSetting));
  std::string_view list = header != nullptr ? header : "";
  std::string_view piece;
  bool more = true;
  Address client = proxy;
  while (ContainAddress(trusted, client, kSetting) && TakeLast(list, more, piece)) {
    if (!ParseAddress(piece, client)) {
      return proxy;
    }
  }
  return client;
}

}  // namespace ORBO
