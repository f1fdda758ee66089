#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/linux/crypto.h"

namespace ORBO {

// What the two sides of enciphered parameters share; docs/encrypted-parameters.md has
// the format.

// What a message is for, so that none is taken for another.
inline constexpr std::string_view kLineTag = "e1";     // a parameter line, for a key
inline constexpr std::string_view kKeyTextTag = "w1";  // the key text of a pair, for a key
inline constexpr std::string_view kPairTag = "a1";     // the line of a pair, by its key text

inline constexpr std::size_t kKeyTextSize = 32;
// Whether `text` has the form of a key text: characters of base64url.
bool IsKeyText(std::string_view text);

// What AES-GCM binds a sealed message to, beside its key.
std::string BoundText(std::string_view tag, std::string_view key_id);

// Every key that is agreed upon is new, so that one initialisation vector is enough.
std::string FixedIv();

// One side of a sealed message.
struct KeyAgreement {
  std::string_view own_pem;    // this side's private key
  std::string_view peer;       // the other side's point
  std::string_view ephemeral;  // the point of the message's own key
  std::string_view key_id;     // of the key that the message is for
};

// Derives the key of a sealed message.
bool DeriveMessageKey(const CryptoModule& crypto, const KeyAgreement& agreement,
                      std::string_view tag, std::string& key);
// Derives the key of a pair's line.
bool DerivePairKey(const CryptoModule& crypto, std::string_view key_text, std::string& key);

// The time when a message was sent stands in front of its text.
std::string WithTime(std::int64_t sent, std::string_view text);
// Takes the time off the front.  False if there is none.
bool TakeTime(std::string& text, std::int64_t& sent);

}  // namespace ORBO
