#include "public_key.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "platform/linux/base64url.h"
#include "platform/linux/cleanse.h"
#include "platform/linux/crypto.h"
#include "platform/linux/spki.h"
#include "util/read_file.h"

namespace ORBO::tool {

bool ReadKeyFile(const std::string& path, std::string& spki, std::string& complaint) {
  const CryptoModule* const crypto = OpenCryptoModule();
  SecretText pem;  // it may be a private key, whose public half is taken
  std::string point;
  if (crypto == nullptr) {
    complaint = "a module cannot be used; the system log has the reason";
  } else if (!ReadWholeFile(path, pem.text)) {
    complaint = "cannot read " + path + ": " + std::strerror(errno);
  } else if (!crypto->public_point(pem.text, point)) {
    complaint = "no key on the curve P-256 in PEM: " + path;
  } else {
    spki = SpkiOfPoint(point);
    return true;
  }
  return false;
}

bool ReadKeyText(const std::string& text, std::string& spki, std::string& complaint) {
  std::string url_text = text.substr(0, text.find_last_not_of('=') + 1);
  std::replace(url_text.begin(), url_text.end(), '+', '-');
  std::replace(url_text.begin(), url_text.end(), '/', '_');
  std::string bytes;
  if (!DecodeBase64Url(url_text, bytes) || PointOfSpki(bytes).empty()) {
    complaint = "no public key on the curve P-256 in base64: " + text;
    return false;
  }
  spki = bytes;
  return true;
}

}  // namespace ORBO::tool
