#include "platform/linux/parameter_format.h"

#include <algorithm>

#include "platform/linux/base64url.h"
#include "platform/linux/cleanse.h"

namespace ORBO {
namespace {

constexpr std::string_view kNoSalt = "";
constexpr std::size_t kTimeSize = 8;  // bytes, the highest first

std::string Purpose(std::string_view tag) { return std::string("webapi-KEP5 ").append(tag); }

}  // namespace

bool IsKeyText(std::string_view text) {
  return text.size() == kKeyTextSize &&
         std::all_of(text.begin(), text.end(), [](char c) { return Base64UrlDigit(c) >= 0; });
}

std::string BoundText(std::string_view tag, std::string_view key_id) {
  return std::string(tag).append(".").append(key_id);
}

std::string FixedIv() { return std::string(kCipherIvSize, '\0'); }

bool DeriveMessageKey(const CryptoModule& crypto, const KeyAgreement& agreement,
                      std::string_view tag, std::string& key) {
  SecretText secret;
  const std::string salt = std::string(agreement.ephemeral).append(agreement.key_id);
  return crypto.agree(agreement.own_pem, agreement.peer, secret.text) &&
         crypto.derive_key(secret.text, salt, Purpose(tag), key);
}

bool DerivePairKey(const CryptoModule& crypto, std::string_view key_text, std::string& key) {
  return crypto.derive_key(key_text, kNoSalt, Purpose(kPairTag), key);
}

std::string WithTime(std::int64_t sent, std::string_view text) {
  std::string message;
  message.reserve(kTimeSize + text.size());
  for (std::size_t i = kTimeSize; i-- > 0;) {
    message += static_cast<char>(static_cast<std::uint64_t>(sent) >> (8 * i));
  }
  return message.append(text);
}

bool TakeTime(std::string& text, std::int64_t& sent) {
  if (text.size() < kTimeSize) {
    return false;
  }
  std::uint64_t time = 0;
  for (std::size_t i = 0; i < kTimeSize; ++i) {
    time = time << 8 | static_cast<unsigned char>(text[i]);
  }
  sent = static_cast<std::int64_t>(time);
  text.erase(0, kTimeSize);
  return true;
}

}  // namespace ORBO
