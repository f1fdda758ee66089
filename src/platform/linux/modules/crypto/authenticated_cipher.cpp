#include "platform/linux/modules/crypto/authenticated_cipher.h"

#include <openssl/evp.h>

#include <climits>
#include <memory>

#include "platform/linux/cleanse.h"
#include "platform/linux/crypto.h"
#include "platform/linux/modules/crypto/bytes.h"

namespace ORBO {
namespace {

enum class Direction : int { kOpen = 0, kSeal = 1 };

// One run of AES-256-GCM, whose state is overwritten at the end.
class Run {
 public:
  Run() : context_(EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free) {}

  bool Begin(Direction direction, std::string_view key, std::string_view iv,
             std::string_view bound_data) {
    int size = 0;
    return key.size() == kCipherKeySize && iv.size() == kCipherIvSize &&
           bound_data.size() <= INT_MAX &&
           EVP_CipherInit_ex(context_.get(), EVP_aes_256_gcm(), nullptr, Bytes(key), Bytes(iv),
                             static_cast<int>(direction)) == 1 &&
           EVP_CipherUpdate(context_.get(), nullptr, &size, Bytes(bound_data),
                            static_cast<int>(bound_data.size())) == 1;
  }

  // `to` has the size of `from`.
  bool Put(std::string_view from, unsigned char* to) {
    int size = 0;
    return from.size() <= INT_MAX &&
           (from.empty() || EVP_CipherUpdate(context_.get(), to, &size, Bytes(from),
                                             static_cast<int>(from.size())) == 1);
  }

  bool End() {
    // The mode has nothing left to write, but a pointer is asked for.
    unsigned char nothing[kCipherTagSize];
    int size = 0;
    return EVP_CipherFinal_ex(context_.get(), nothing, &size) == 1;
  }

  // The tag, to set before End of opening and to get after End of sealing.
  bool Tag(int command, unsigned char* tag) {
    return EVP_CIPHER_CTX_ctrl(context_.get(), command, kCipherTagSize, tag) == 1;
  }

 private:
  std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> context_;
};

}  // namespace

bool SealedByKey(std::string_view key, std::string_view iv, std::string_view bound_data,
                 std::string_view text, std::string& sealed) {
  Run run;
  sealed.assign(text.size() + kCipherTagSize, '\0');
  if (run.Begin(Direction::kSeal, key, iv, bound_data) && run.Put(text, Bytes(sealed)) &&
      run.End() && run.Tag(EVP_CTRL_AEAD_GET_TAG, Bytes(sealed) + text.size())) {
    return true;
  }
  sealed.clear();
  return false;
}

bool OpenedByKey(std::string_view key, std::string_view iv, std::string_view bound_data,
                 std::string_view sealed, std::string& text) {
  text.clear();
  if (sealed.size() < kCipherTagSize) {
    return false;
  }
  const std::string_view body = sealed.substr(0, sealed.size() - kCipherTagSize);
  std::string tag(sealed.substr(body.size()));
  Run run;
  text.assign(body.size(), '\0');
  if (run.Begin(Direction::kOpen, key, iv, bound_data) && run.Put(body, Bytes(text)) &&
      run.Tag(EVP_CTRL_AEAD_SET_TAG, Bytes(tag)) && run.End()) {
    return true;
  }
  Cleanse(text);
  return false;
}

}  // namespace ORBO
