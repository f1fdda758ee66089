#pragma once

#include <string>
#include <string_view>

namespace ORBO {

// CryptoModule::make_private_key, public_point and agree.
bool MakePrivateKey(std::string& pem);
bool PublicPoint(std::string_view pem, std::string& point);
bool AgreeOnKey(std::string_view private_pem, std::string_view point, std::string& secret);

}  // namespace ORBO
