#pragma once

#include <string>

namespace ORBO {

// The cryptography of the platform.  It lies in a module that is opened on first
// use and stays open.

// HMAC-SHA256 (RFC 2104) of `data` under `key`, 32 bytes.  False, and `out`
// unchanged, where the module cannot be used; that is logged.
bool HmacSHA256(const std::string& key, const std::string& data, std::string& out);

}  // namespace ORBO
