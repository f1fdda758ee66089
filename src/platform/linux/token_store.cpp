#include "platform/linux/token_store.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <string_view>
#include <tuple>
#include <utility>

#include "platform/linux/base64url.h"
#include "platform/linux/crypto.h"
#include "platform/linux/key_name.h"
#include "platform/linux/private_file.h"
#include "platform/linux/random.h"
#include "platform/linux/token_key.h"
#include "platform/linux/token_text.h"

namespace ORBO {
namespace {

constexpr char kIdLetter = 'k';
constexpr std::size_t kIdBytes = 12;
constexpr char kSecretLetter = 's';
constexpr std::size_t kSecretBytes = 32;
constexpr std::size_t kLargestFile = 262144;
constexpr std::string_view kVersion = "t1.";
constexpr std::string_view kSuffix = ".json";
constexpr char kAllMethods[] = "*";

std::string FileName(const std::string& id) { return id + std::string(kSuffix); }

bool IsTokenId(std::string_view id) { return IsKeyName(id, kIdLetter, kIdBytes); }

// The id in a token's text; "" if the text has not the form of a token.
std::string IdIn(const std::string& text) {
  std::string_view rest = text;
  if (rest.substr(0, kVersion.size()) != kVersion) {
    return {};
  }
  rest.remove_prefix(kVersion.size());
  const std::size_t point = rest.find('.');
  const bool is_token = point != std::string_view::npos && IsTokenId(rest.substr(0, point)) &&
                        IsKeyName(rest.substr(point + 1), kSecretLetter, kSecretBytes);
  return is_token ? std::string(rest.substr(0, point)) : "";
}

// The keyed hash of a token's text, id included, as it is stored.
bool Hash(const std::string& text, MissingKey missing, std::string& hash) {
  std::string key;
  std::string digest;
  if (!ReadTokenKey(missing, key)) {
    return false;
  }
  if (!HmacSHA256(key, text, digest)) {
    errno = ENOSYS;
    return false;
  }
  hash = Base64Url(digest);
  return true;
}

bool ReadToken(const std::string& id, StoredToken& out) {
  std::string text;
  std::int64_t modified = 0;
  if (ReadPrivateFile(TokenDirectory() + "/" + FileName(id), kLargestFile, text, modified) !=
          FileState::kRead ||
      !FromTokenText(text, out)) {
    return false;
  }
  out.token.id = id;
  return true;
}

bool MayCall(const AccessToken& token, const std::string& api, const std::string& method) {
  return std::any_of(token.scopes.begin(), token.scopes.end(), [&](const TokenScope& scope) {
    return scope.api == api &&
           std::any_of(scope.methods.begin(), scope.methods.end(), [&](const std::string& name) {
             return name == kAllMethods || name == method;
           });
  });
}

}  // namespace

bool CreateToken(AccessToken& token, std::string& text) {
  StoredToken stored{token, {}};
  stored.token.id = NewKeyName(kIdLetter, kIdBytes);
  stored.token.created = std::time(nullptr);
  std::string new_text =
      std::string(kVersion) + stored.token.id + "." + NewKeyName(kSecretLetter, kSecretBytes);
  if (!IsStorableToken(token)) {
    errno = EINVAL;
    return false;
  }
  if (!Hash(new_text, MissingKey::kMake, stored.hash)) {
    return false;
  }
  const std::string content = ToTokenText(stored);
  if (content.size() > kLargestFile) {
    errno = EFBIG;
    return false;
  }
  SweepPrivateDirectory(TokenDirectory());
  if (!CreatePrivateFile(TokenDirectory(), FileName(stored.token.id), content,
                         Durability::kPowerLoss)) {
    return false;
  }
  token = std::move(stored.token);
  text = std::move(new_text);
  return true;
}

std::vector<AccessToken> ListTokens() {
  std::vector<AccessToken> tokens;
  for (const std::string& name : PrivateFileNames(TokenDirectory())) {
    StoredToken stored;
    const std::string id = name.substr(0, name.find('.'));
    if (IsTokenId(id) && name == FileName(id) && ReadToken(id, stored)) {
      tokens.push_back(std::move(stored.token));
    }
  }
  std::sort(tokens.begin(), tokens.end(), [](const AccessToken& a, const AccessToken& b) {
    return std::tie(a.created, a.id) < std::tie(b.created, b.id);
  });
  return tokens;
}

bool RevokeToken(const std::string& id) {
  return IsTokenId(id) && unlink((TokenDirectory() + "/" + FileName(id)).c_str()) == 0;
}

bool FindToken(const std::string& text, const std::string& api, const std::string& method,
               AccessToken& out) {
  const std::string id = IdIn(text);
  StoredToken stored;
  std::string hash;
  if (id.empty() || !ReadToken(id, stored) || !Hash(text, MissingKey::kFail, hash) ||
      !SecretsEqual(hash, stored.hash)) {
    return false;
  }
  const AccessToken& token = stored.token;
  if ((token.expires != 0 && std::time(nullptr) >= token.expires) || !MayCall(token, api, method)) {
    return false;
  }
  out = std::move(stored.token);
  return true;
}

}  // namespace ORBO
