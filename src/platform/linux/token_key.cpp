#include "platform/linux/token_key.h"

#include <cerrno>
#include <cstdint>

#include "platform/linux/private_file.h"
#include "platform/linux/random.h"
#include "util/log.h"
#include "util/paths.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "token_key.cpp";
constexpr char kName[] = ".key";
constexpr std::size_t kSize = 32;

FileState ReadKey(std::string& key) {
  std::int64_t modified = 0;
  const FileState state = ReadPrivateFile(TokenDirectory() + "/" + kName, kSize, key, modified);
  if (state == FileState::kUnusable || (state == FileState::kRead && key.size() != kSize)) {
    Log(LOG_ERR, "%s:%d the key of the access tokens cannot be used", kSource, __LINE__);
    errno = EPERM;
    return FileState::kUnusable;
  }
  return state;
}

}  // namespace

std::string TokenDirectory() { return RootedPath("/var/lib/orbo/tokens"); }

bool ReadTokenKey(MissingKey missing, std::string& key) {
  const FileState state = ReadKey(key);
  if (state != FileState::kMissing || missing == MissingKey::kFail) {
    return state == FileState::kRead;
  }
  // Another process may make one at the same time: what lies there then is the key.
  return (CreatePrivateFile(TokenDirectory(), kName, RandomBytes(kSize), Durability::kPowerLoss) ||
          errno == EEXIST) &&
         ReadKey(key) == FileState::kRead;
}

}  // namespace ORBO
