#include "request/encrypted_params.h"

#include <string.h>

#include <string>

#include "platform/cipher.h"
#include "platform/webapi_util.h"
#include "util/json_types.h"

namespace ORBO {
namespace {

constexpr char kTokenMember[] = "__nEkOtReHpIc";
constexpr char kAESTextMember[] = "__tXeTrEhPiC";
constexpr char kNestedMember[] = "webapi";

constexpr int kKeyBufferSize = 33;  // a key of 32 characters and its terminator

// A key that is cleared whichever way the call ends.
struct Key {
  std::string text = std::string(kKeyBufferSize, '\0');
  ~Key() { explicit_bzero(text.data(), text.capacity()); }
};

}  // namespace

bool DecryptParamText(const std::string& text, Json::Value& params) {
  std::string line = text;
  if (OrboCgiDecryptParam(line.data()) == 0) {
    return false;
  }
  return WebAPIUtil::strPairToJsonObj(line.c_str(), params, true, true);
}

bool DecryptAESParam(Json::Value& params) {
  if (!JSON::Has(params, kTokenMember) || !JSON::Has(params, kAESTextMember)) {
    return true;
  }
  const std::string token = JSON::AsString(JSON::At(params, kTokenMember));
  const std::string cipher_text = JSON::AsString(JSON::At(params, kAESTextMember));
  JSON::Remove(params, kTokenMember);
  JSON::Remove(params, kAESTextMember);
  if (token.empty() || cipher_text.empty()) {
    return false;
  }
  Key key;
  if (ORBOKptokenGenerateToken(token.c_str(), key.text.data(), kKeyBufferSize) < 0) {
    return false;
  }
  key.text.resize(strnlen(key.text.c_str(), kKeyBufferSize - 1));
  std::string line;
  if (!CredRequestUtil::GetDecryptAESString(key.text, cipher_text, line)) {
    return false;
  }
  return WebAPIUtil::strPairToJsonObj(line, params, true, true);
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
