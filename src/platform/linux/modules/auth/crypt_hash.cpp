#include "platform/linux/modules/auth/crypt_hash.h"

#include <crypt.h>

#include <cstring>
#include <memory>

namespace ORBO {
namespace {

constexpr char kYescrypt[] = "$y$";

// The password stands in the library's working memory, too.
struct CleansingDelete {
  void operator()(crypt_data* data) const {
    explicit_bzero(data, sizeof *data);
    delete data;
  }
};

}  // namespace

bool CryptHash(const char* password, const char* setting, char* output, std::size_t size) {
  char salt[CRYPT_GENSALT_OUTPUT_SIZE];
  if (setting == nullptr) {
    setting = crypt_gensalt_rn(kYescrypt, 0, nullptr, 0, salt, sizeof salt);
  }
  // Only methods that still count as safe: not the old ones that shadow files may
  // hold.
  if (setting == nullptr || crypt_checksalt(setting) != CRYPT_SALT_OK) {
    return false;
  }
  const std::unique_ptr<crypt_data, CleansingDelete> data(new crypt_data());
  const char* const hash = crypt_rn(password, setting, data.get(), sizeof *data);
  // A failure may also be told by a text that is no hash and begins with "*".
  if (hash == nullptr || *hash == '*' || std::strlen(hash) >= size) {
    return false;
  }
  std::memcpy(output, hash, std::strlen(hash) + 1);
  return true;
}

}  // namespace ORBO
