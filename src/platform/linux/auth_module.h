#pragma once

#include <cstddef>

#include "platform/linux/password_check.h"

namespace ORBO {

// What the module webapi-KEP5-auth.so offers.  It alone is linked with the
// libraries for hashing and for pluggable authentication.
struct AuthModule {
  // Hashes `password` with the method, cost and salt that `setting` begins with (a
  // hash of before will do), or with a new salt where it is null, and writes the
  // NUL-terminated hash into `output` of `size` bytes.  False if the setting is no
  // usable one or the hash does not fit.
  bool (*hash)(const char* password, const char* setting, char* output, std::size_t size);

  // Asks the service "webapi", as configured in `directory`, or where the system
  // keeps the services if that is null.  `address` is the client's, "" for none.
  PasswordResult (*ask_service)(const char* directory, const char* user, const char* password,
                                const char* address);
};

// The longest hash, with its NUL.
inline constexpr std::size_t kHashSize = 384;

// The module's one symbol, a function without parameters that returns its table.
inline constexpr char kAuthModuleEntry[] = "WebapiAuthModule";
using AuthModuleEntry = const AuthModule* (*)();

// The module, opened at the first call and kept; null, and logged, if that fails.
const AuthModule* OpenAuthModule();

}  // namespace ORBO
