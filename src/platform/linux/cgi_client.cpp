#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/cgi.h"
#include "platform/linux/trusted_proxies.h"

int OrboCgiGetRemoteIP(char* buffer, std::size_t size) {
  ORBO::Address client;
  if (buffer == nullptr || !ORBO::PeerAddress(client)) {
    return 0;
  }
  // Without the header nobody's word is to be weighed.
  if (std::getenv("HTTP_X_FORWARDED_FOR") != nullptr) {
    client = ORBO::ForwardedClient(client);
  }
  const std::string text = ORBO::AddressText(client);
  if (text.size() >= size) {
    return 0;
  }
  std::memcpy(buffer, text.c_str(), text.size() + 1);
  return 1;
}
