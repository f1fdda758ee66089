#pragma once

#include <string>
#include <string_view>

namespace ORBO {

// CryptoModule::sha256, hmac_sha256 and derive_key.
bool SHA256Digest(std::string_view data, std::string& digest);
bool HmacDigest(std::string_view key, std::string_view data, std::string& digest);
bool DeriveKey(std::string_view secret, std::string_view salt, std::string_view info,
               std::string& key);

}  // namespace ORBO
