#include "platform/linux/parameter_key.h"

#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <tuple>
#include <utility>

#include "platform/linux/base64url.h"
#include "platform/linux/cleanse.h"
#include "platform/linux/crypto.h"
#include "platform/linux/key_value_text.h"
#include "platform/linux/lock_retry.h"
#include "platform/linux/platform_conf.h"
#include "platform/linux/private_directory.h"
#include "platform/linux/private_file.h"
#include "platform/linux/spki.h"
#include "platform/linux/wall_clock.h"
#include "util/log.h"
#include "util/number_text.h"
#include "util/paths.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "parameter_key.cpp";
constexpr std::string_view kSuffix = ".pem";
constexpr char kDigits[] = "0123456789abcdef";
constexpr std::size_t kIdSize = 16;
constexpr std::size_t kLargestFile = 4096;
constexpr int kLockSeconds = 5;

constexpr std::int64_t kSecond = 1000;
constexpr std::int64_t kDefaultGrace = 86400;
constexpr std::int64_t kLongestGrace = 31536000;

std::string PathOf(std::string_view id) {
  return ParameterKeyDirectory().append("/").append(id).append(kSuffix);
}

bool IsId(std::string_view text) {
  return text.size() == kIdSize && text.find_first_not_of(kDigits) == std::string_view::npos;
}

std::int64_t Grace() {
  return NumberSetting("parameter_key_grace", kDefaultGrace, 0, kLongestGrace) * kSecond;
}

// The file: what is to be known of the key without the crypto module, and the private
// half.  Readers of PEM pass over lines in front of it.
std::string FileText(const ParameterKey& key, const std::string& pem) {
  return "created=" + std::to_string(key.created) + "\nspki=" + key.spki + "\n" + pem;
}

bool ReadKeyFile(std::string_view id, ParameterKey& key, std::string& text) {
  std::int64_t modified = 0;
  const FileState state = ReadPrivateFile(PathOf(id), kLargestFile, text, modified);
  JSON::Integer created;
  if (state == FileState::kRead && JSON::ReadInteger(ValueOfKey(text, "created"), created) &&
      !created.negative && JSON::ToSigned(created, key.created)) {
    key.id = id;
    key.spki = ValueOfKey(text, "spki");
    return true;
  }
  if (state != FileState::kMissing) {
    Log(LOG_ERR, "%s:%d the key %s cannot be used", kSource, __LINE__, std::string(id).c_str());
  }
  return false;
}

// All keys that can be read, the newest first.
std::vector<ParameterKey> StoredKeys() {
  std::vector<ParameterKey> keys;
  for (const std::string& name : PrivateFileNames(ParameterKeyDirectory())) {
    const std::string_view id = std::string_view(name).substr(0, kIdSize);
    ParameterKey key;
    SecretText text;
    if (IsId(id) && name.substr(kIdSize) == kSuffix && ReadKeyFile(id, key, text.text)) {
      keys.push_back(std::move(key));
    }
  }
  std::sort(keys.begin(), keys.end(), [](const ParameterKey& a, const ParameterKey& b) {
    return std::tie(a.created, a.id) > std::tie(b.created, b.id);
  });
  const std::int64_t grace = Grace();
  for (std::size_t i = 1; i < keys.size(); ++i) {
    keys[i].expires = keys[i - 1].created + grace;
  }
  return keys;
}

// Writes a new key, younger than `keys`, the clock notwithstanding.
bool Make(const PrivateDirectory& directory, const std::vector<ParameterKey>& keys,
          ParameterKey& key) {
  const CryptoModule* const crypto = OpenCryptoModule();
  SecretText pem;
  std::string point;
  if (crypto == nullptr || !crypto->make_private_key(pem.text) ||
      !crypto->public_point(pem.text, point)) {
    errno = ENOSYS;
    return false;
  }
  const std::string spki = SpkiOfPoint(point);
  ParameterKey made;
  made.id = ParameterKeyId(spki);
  made.spki = Base64Url(spki);
  made.created = std::max(WallClock(), keys.empty() ? 0 : keys.front().created + 1);
  SecretText text;
  text.text = FileText(made, pem.text);
  SweepPrivateDirectory(ParameterKeyDirectory());
  if (!CreatePrivateFile(directory, made.id + std::string(kSuffix), text.text,
                         Durability::kPowerLoss)) {
    return false;
  }
  key = std::move(made);
  return true;
}

enum class Wanted { kCurrent, kNew };

// Of several processes that find no key one makes it, and the others wait for that.
bool MakeUnderLock(Wanted wanted, ParameterKey& key) {
  const PrivateDirectory directory(ParameterKeyDirectory());
  if (!directory.IsOpen() || !RetryLock(kLockSeconds, [&directory] {
        return flock(directory.get(), LOCK_EX | LOCK_NB) == 0;
      })) {
    return false;
  }
  const std::vector<ParameterKey> keys = StoredKeys();
  if (wanted == Wanted::kNew || keys.empty()) {
    return Make(directory, keys, key);
  }
  key = keys.front();
  return true;
}

// One that would be good for more than its time was made under another clock.
bool IsAccepted(const ParameterKey& key, std::int64_t now) {
  return key.expires == 0 || (now < key.expires && key.expires - now <= 2 * Grace());
}

}  // namespace

std::string ParameterKeyDirectory() { return RootedPath("/var/lib/orbo/keys"); }

std::string ParameterKeyId(std::string_view spki) {
  const CryptoModule* const crypto = OpenCryptoModule();
  std::string digest;
  if (crypto == nullptr || !crypto->sha256(spki, digest)) {
    return "";
  }
  std::string id;
  for (std::size_t i = 0; i < kIdSize / 2; ++i) {
    const auto byte = static_cast<unsigned char>(digest[i]);
    id.append(1, kDigits[byte >> 4]).append(1, kDigits[byte & 15]);
  }
  return id;
}

bool CurrentParameterKey(ParameterKey& key) {
  std::vector<ParameterKey> keys = ParameterKeys(WallClock());
  if (keys.empty()) {
    return MakeUnderLock(Wanted::kCurrent, key);
  }
  key = std::move(keys.front());
  return true;
}

bool RotateParameterKeys(ParameterKey& key) { return MakeUnderLock(Wanted::kNew, key); }

std::vector<ParameterKey> ParameterKeys(std::int64_t now) {
  std::vector<ParameterKey> accepted;
  for (ParameterKey& key : StoredKeys()) {
    if (IsAccepted(key, now)) {
      accepted.push_back(std::move(key));
    } else if (now >= key.expires) {
      unlink(PathOf(key.id).c_str());
    }
  }
  return accepted;
}

bool ReadParameterKey(std::string_view id, std::int64_t now, std::string& pem) {
  const std::vector<ParameterKey> keys = ParameterKeys(now);
  ParameterKey key;
  return std::any_of(keys.begin(), keys.end(),
                     [id](const ParameterKey& known) { return known.id == id; }) &&
         ReadKeyFile(id, key, pem);
}

}  // namespace ORBO
