#include "platform/linux/parameter_cipher.h"

#include <chrono>
#include <cstdlib>

#include "platform/linux/base64url.h"
#include "platform/linux/cleanse.h"
#include "platform/linux/parameter_format.h"
#include "platform/linux/parameter_key.h"
#include "platform/linux/replay_marks.h"

namespace ORBO {
namespace {

// More than any page puts into one request; each takes some of a millisecond, and a
// mark that stays.
constexpr int kMostInASecond = 64;

constexpr std::size_t kCoordinateSize = (kPointSize - 1) / 2;

// Whether this process has opened less than the most for a second.
bool MayOpen() {
  using Clock = std::chrono::steady_clock;
  static Clock::time_point begin;
  static int count = 0;
  const Clock::time_point now = Clock::now();
  if (now - begin >= std::chrono::seconds(1)) {
    begin = now;
    count = 0;
  }
  return ++count <= kMostInASecond;
}

struct SealedText {
  std::string key_id;
  std::string ephemeral;  // a point
  std::string body;
};

// Takes "TAG.KEY-ID.BASE64URL" to pieces.
bool Parse(std::string_view tag, std::string_view sealed, SealedText& out) {
  if (sealed.substr(0, tag.size()) != tag || sealed.substr(tag.size(), 1) != ".") {
    return false;
  }
  sealed.remove_prefix(tag.size() + 1);
  const std::size_t point = sealed.find('.');
  if (point == std::string_view::npos || !DecodeBase64Url(sealed.substr(point + 1), out.body) ||
      out.body.size() < kPointSize) {
    return false;
  }
  out.key_id = sealed.substr(0, point);
  out.ephemeral = out.body.substr(0, kPointSize);
  out.body.erase(0, kPointSize);
  return true;
}

// Whether an opened message is one to accept: takes the time off it and marks it.
bool Accept(const std::string& mark, std::int64_t now, std::string& text) {
  std::int64_t sent = 0;
  // First a time that can be reckoned with.
  return TakeTime(text, sent) && sent >= 0 && sent <= now + kMessageWindow &&
         sent >= now - kMessageWindow && text.find('\0') == std::string::npos &&
         MarkMessage(mark, sent, now);
}

bool OpenForKey(std::string_view tag, std::string_view sealed, std::int64_t now,
                std::string& text) {
  SealedText parts;
  SecretText pem;
  if (!Parse(tag, sealed, parts) || !ReadParameterKey(parts.key_id, now, pem.text)) {
    return false;
  }
  const CryptoModule* const crypto = OpenCryptoModule();
  SecretText key;
  return crypto != nullptr &&
         DeriveMessageKey(*crypto, {pem.text, parts.ephemeral, parts.ephemeral, parts.key_id}, tag,
                          key.text) &&
         crypto->open(key.text, FixedIv(), BoundText(tag, parts.key_id), parts.body, text) &&
         Accept("e" + Base64Url(parts.ephemeral.substr(1, kCoordinateSize)), now, text);
}

bool OpenByKeyText(std::string_view key_text, std::string_view sealed, std::int64_t now,
                   std::string& line) {
  std::string body;
  if (!IsKeyText(key_text) || !DecodeBase64Url(sealed, body) || body.size() < kCipherIvSize) {
    return false;
  }
  const std::string iv = body.substr(0, kCipherIvSize);
  body.erase(0, kCipherIvSize);
  const CryptoModule* const crypto = OpenCryptoModule();
  SecretText key;
  return crypto != nullptr && DerivePairKey(*crypto, key_text, key.text) &&
         crypto->open(key.text, iv, kPairTag, body, line) && Accept("i" + Base64Url(iv), now, line);
}

}  // namespace

bool OpenSealedText(std::string_view tag, std::string_view sealed, std::int64_t now,
                    std::string& text) {
  text.clear();
  if (MayOpen() && OpenForKey(tag, sealed, now, text)) {
    return true;
  }
  Cleanse(text);
  return false;
}

bool OpenSealedLine(std::string_view key_text, std::string_view sealed, std::int64_t now,
                    std::string& line) {
  line.clear();
  if (OpenByKeyText(key_text, sealed, now, line)) {
    return true;
  }
  Cleanse(line);
  return false;
}

}  // namespace ORBO
