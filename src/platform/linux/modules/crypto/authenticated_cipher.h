#pragma once

#include <string>
#include <string_view>

namespace ORBO {

// CryptoModule::seal and open.
bool SealedByKey(std::string_view key, std::string_view iv, std::string_view bound_data,
                 std::string_view text, std::string& sealed);
bool OpenedByKey(std::string_view key, std::string_view iv, std::string_view bound_data,
                 std::string_view sealed, std::string& text);

}  // namespace ORBO
