#include "platform/linux/parameter_seal.h"

#include "platform/linux/base64url.h"
#include "platform/linux/cleanse.h"
#include "platform/linux/parameter_format.h"
#include "platform/linux/parameter_key.h"
#include "platform/linux/random.h"
#include "platform/linux/spki.h"

namespace ORBO {
namespace {

bool Seal(std::string_view tag, std::string_view spki, std::string_view text, std::int64_t now,
          std::string& sealed) {
  const CryptoModule* const crypto = OpenCryptoModule();
  const std::string id = ParameterKeyId(spki);
  const std::string peer = PointOfSpki(spki);
  SecretText pem;
  SecretText key;
  std::string point;
  std::string body;
  if (crypto == nullptr || !crypto->make_private_key(pem.text) ||
      !crypto->public_point(pem.text, point) ||
      !DeriveMessageKey(*crypto, {pem.text, peer, point, id}, tag, key.text)) {
    return false;
  }
  const std::string bound_text = BoundText(tag, id);
  if (!crypto->seal(key.text, FixedIv(), bound_text, WithTime(now, text), body)) {
    return false;
  }
  sealed = bound_text + "." + Base64Url(point + body);
  return true;
}

}  // namespace

bool SealAsText(std::string_view spki, std::string_view line, std::int64_t now, std::string& text) {
  return Seal(kLineTag, spki, line, now, text);
}

bool SealAsPair(std::string_view spki, std::string_view line, std::int64_t now, std::string& token,
                std::string& text) {
  SecretText key_text;
  key_text.text = Base64Url(RandomBytes(kKeyTextSize * 3 / 4));
  const std::string iv = RandomBytes(kCipherIvSize);
  const CryptoModule* const crypto = OpenCryptoModule();
  SecretText key;
  std::string body;
  if (crypto == nullptr || !DerivePairKey(*crypto, key_text.text, key.text) ||
      !crypto->seal(key.text, iv, kPairTag, WithTime(now, line), body) ||
      !Seal(kKeyTextTag, spki, key_text.text, now, token)) {
    return false;
  }
  text = Base64Url(iv + body);
  return true;
}

}  // namespace ORBO
