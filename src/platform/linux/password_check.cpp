#include "platform/linux/password_check.h"

#include <cerrno>
#include <cstring>

#include "platform/linux/auth_module.h"
#include "platform/linux/password_file.h"
#include "platform/linux/platform_conf.h"
#include "platform/linux/random.h"
#include "util/log.h"
#include "util/log_text.h"
#include "util/paths.h"
#include "util/utf8.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "password_check.cpp";
constexpr std::size_t kLongestName = 256;
constexpr std::size_t kLongestPassword = 511;
constexpr char kServiceDirectory[] = "/etc/pam.d";

// What an unknown user's password is hashed with where the file has no hash at all.
constexpr char kSomeSetting[] = "$y$j9T$OQ2nq5w3XVd0bJPzZTKCf.";

bool IsNameCharacter(unsigned char c) { return c >= 0x20 && c < 0x7f && c != ':' && c != '/'; }

bool HasNameCharacters(std::string_view name) {
  while (!name.empty()) {
    std::size_t length = UTF8::CharacterLength(name);
    if (length == 0) {
      if (!IsNameCharacter(static_cast<unsigned char>(name.front()))) {
        return false;
      }
      length = 1;
    }
    name.remove_prefix(length);
  }
  return true;
}

bool IsPassword(const std::string& password) {
  return !password.empty() && password.size() <= kLongestPassword &&
         password.find('\0') == std::string::npos;
}

PasswordResult CheckFile(const AuthModule& module, const std::string& user,
                         const std::string& password) {
  StoredPassword stored;
  if (!ReadStoredPassword(user, stored)) {
    Log(LOG_ERR, "%s:%d cannot use the password file: %s", kSource, __LINE__, std::strerror(errno));
    return PasswordResult::kUnavailable;
  }
  char hash[kHashSize] = {};
  if (!stored.hash.empty() &&
      module.hash(password.c_str(), stored.hash.c_str(), hash, sizeof hash)) {
    return SecretsEqual(hash, stored.hash) ? PasswordResult::kAccepted : PasswordResult::kRefused;
  }
  // Unknown, or locked by a text that is no hash: the answer must come no sooner.
  if (!module.hash(password.c_str(), stored.any_hash.c_str(), hash, sizeof hash)) {
    module.hash(password.c_str(), kSomeSetting, hash, sizeof hash);
  }
  return PasswordResult::kRefused;
}

PasswordResult CheckService(const AuthModule& module, const std::string& user,
                            const std::string& password, const std::string& remote_address) {
  const std::string rooted = RootedPath(kServiceDirectory);
  const char* const directory = rooted == kServiceDirectory ? nullptr : rooted.c_str();
  return module.ask_service(directory, user.c_str(), password.c_str(), remote_address.c_str());
}

}  // namespace

bool IsUserName(const std::string& name) {
  return !name.empty() && name.size() <= kLongestName && name.front() != ' ' &&
         name.front() != '#' && name.back() != ' ' && HasNameCharacters(name);
}

PasswordResult CheckPassword(const std::string& user, const std::string& password,
                             const std::string& remote_address) {
  if (!IsUserName(user) || !IsPassword(password)) {
    return PasswordResult::kRefused;
  }
  const std::string means = PlatformSetting("auth");
  if (!means.empty() && means != "file" && means != "pam") {
    Log(LOG_ERR, "%s:%d unknown value of auth: %s", kSource, __LINE__, LogText(means).c_str());
    return PasswordResult::kUnavailable;
  }
  const AuthModule* const module = OpenAuthModule();
  if (module == nullptr) {
    return PasswordResult::kUnavailable;
  }
  return means == "pam" ? CheckService(*module, user, password, remote_address)
                        : CheckFile(*module, user, password);
}

bool SetFilePassword(const std::string& user, const std::string& password) {
  if (!IsUserName(user) || (!password.empty() && !IsPassword(password))) {
    errno = EINVAL;
    return false;
  }
  if (password.empty()) {
    return WriteStoredPassword(user, "");
  }
  const AuthModule* const module = OpenAuthModule();
  char hash[kHashSize] = {};
  if (module == nullptr || !module->hash(password.c_str(), nullptr, hash, sizeof hash)) {
    errno = ENOSYS;
    return false;
  }
  return WriteStoredPassword(user, hash);
}

}  // namespace ORBO
