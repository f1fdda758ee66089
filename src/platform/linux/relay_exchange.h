#pragma once

#include "platform/linux/relay_module.h"
#include "platform/linux/relay_target.h"

namespace ORBO {

// Whether the request that this process serves has come through so many servers that
// they may be going round in circles.  A relayed request says so in a header; who forges
// that one keeps nobody but himself from being relayed.
bool IsRelayedTooOften();

// A request to the target, with its trust and its limits, and without a body.  `limit`
// seconds count if they are above 0 and less than the target's own.
RelayExchange BeginRelayExchange(const RelayTarget& target, bool is_upload, long limit);

// Makes a failure of every answer that is no web API's, and of one that does not report
// success to an upload, which nobody else reads.
void CheckRelayAnswer(bool is_upload, RelayAnswer& answer);

}  // namespace ORBO
