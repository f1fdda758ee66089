#include "platform/linux/parameter_cipher.h"

#include "platform/linux/base64url.h"
#include "platform/linux/cleanse.h"
#include "platform/linux/parameter_format.h"
#include "platform/linux/parameter_key.h"
#include "platform/linux/replay_marks.h"

namespace ORBO {
namespace {

constexpr std::size_t kCoordinateSize = (kPointSize - 1) / 2;

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

// What could not be opened as a whole is not given away.
bool Finish(bool is_open, std::string& text) {
  if (!is_open) {
    Cleanse(text);
  }
  return is_open;
}

}  // namespace

bool OpenLine(std::string_view sealed, std::int64_t now, std::string& line) {
  line.clear();
  return Finish(OpenForKey(kLineTag, sealed, now, line), line);
}

bool OpenKeyText(std::string_view sealed, std::int64_t now, std::string& key_text) {
  key_text.clear();
  return Finish(OpenForKey(kKeyTextTag, sealed, now, key_text) && IsKeyText(key_text), key_text);
}

bool OpenLineByKeyText(std::string_view key_text, std::string_view sealed, std::int64_t now,
                       std::string& line) {
  line.clear();
  return Finish(OpenByKeyText(key_text, sealed, now, line), line);
}

}  // namespace ORBO
