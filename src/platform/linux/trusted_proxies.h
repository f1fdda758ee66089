#pragma once

#include "platform/linux/address.h"

namespace ORBO {

// The address that the request's connection came from.  False, and `out`
// unchanged, if there is none or it is malformed.
bool PeerAddress(Address& out);

// Whether platform.conf names `address` among `trusted_proxies`: such a proxy's
// word about the client is taken.
bool IsTrustedProxy(const Address& address);

// The client as X-Forwarded-For tells it: every proxy adds the address that it saw
// at the end, so the last one that is no trusted proxy's is the client's, and what
// stands before it the client may have made up.  `proxy` where the header is
// missing or malformed there.
Address ForwardedClient(const Address& proxy);

}  // namespace ORBO
