#include "request/encrypted_params.h"

#include <string.h>

#include <string>

#include "platform/cipher.h"
#include "platform/webapi_util.h"
#include "util/json_types.h"

namespace ORBO {
namespace {

constexpr char kNestedMember[] = "webapi";

constexpr int kKeyBufferSize = 33;  // a key of 32 characters and its terminator

// A key or a deciphered line, cleared whichever way the call ends.
struct Secret {
  std::string text;
  ~Secret() { explicit_bzero(text.data(), text.size()); }
};

// The platform takes texts up to a NUL, which none of them holds.
bool IsText(const std::string& text) { return text.find('\0') == std::string::npos; }

}  // namespace

bool DecryptParamText(const std::string& text, Json::Value& params) {
  Secret line{text};
  return IsText(text) && OrboCgiDecryptParam(line.text.data()) != 0 &&
         WebAPIUtil::strPairToJsonObj(line.text.c_str(), params, true, true);
}

bool DecryptAESParam(Json::Value& params) {
  if (!JSON::Has(params, kKeyTokenMember) || !JSON::Has(params, kKeyedTextMember)) {
    return true;
  }
  const std::string token = JSON::AsString(JSON::At(params, kKeyTokenMember));
  const std::string cipher_text = JSON::AsString(JSON::At(params, kKeyedTextMember));
  JSON::Remove(params, kKeyTokenMember);
  JSON::Remove(params, kKeyedTextMember);
  if (token.empty() || cipher_text.empty() || !IsText(token)) {
    return false;
  }
  char key_buffer[kKeyBufferSize] = {};
  const int result = ORBOKptokenGenerateToken(token.c_str(), key_buffer, kKeyBufferSize);
  const Secret key{std::string(key_buffer, strnlen(key_buffer, kKeyBufferSize - 1))};
  explicit_bzero(key_buffer, sizeof key_buffer);
  Secret line;
  return result >= 0 && CredRequestUtil::GetDecryptAESString(key.text, cipher_text, line.text) &&
         WebAPIUtil::strPairToJsonObj(line.text, params, true, true);
}

bool DecryptParam(Json::Value& params) {
  if (JSON::Has(params, kCipherTextMember)) {
    const std::string text = JSON::AsString(JSON::At(params, kCipherTextMember));
    JSON::Remove(params, kCipherTextMember);
    if (!DecryptParamText(text, params)) {
      return false;
    }
  }
  if (!JSON::IsEmpty(params) && !DecryptAESParam(params)) {
    return false;
  }
  Json::Value* nested = JSON::Find(params, kNestedMember);
  return nested == nullptr || DecryptParam(*nested);
}

}  // namespace ORBO
