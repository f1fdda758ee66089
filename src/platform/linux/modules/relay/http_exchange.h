#pragma once

#include "platform/linux/relay_module.h"

namespace ORBO {

// Makes one request by libcurl.  Throws nothing.
void ExchangeByCurl(const RelayExchange& exchange, RelayAnswer& answer) noexcept;

}  // namespace ORBO
